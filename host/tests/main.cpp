#include <cstdlib>

#include <gtest/gtest.h>

#include "ChildRoles.hpp"

int main(int argc, char** argv) {
    if (const char* role = std::getenv("TQHOST_TEST_ROLE")) {
        return runChildRole(role);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
