#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <host/MessageIdError.hpp>

// Defines the message-identified error class TESSEL::io::archive::<group>::<mnemonic>
// with exactly `count` string arguments (UTF-16 or UTF-8, each stored as one argument).
#define TQ_MESSAGE_CLASS(COMPONENT, MNEMONIC, COUNT)                                            \
    class MNEMONIC : public tessel::host::MessageIdError {                                      \
      public:                                                                                   \
        static constexpr const char* kComponent = COMPONENT;                                    \
        static constexpr const char* kMnemonic = #MNEMONIC;                                     \
        static constexpr std::size_t kArgumentCount = COUNT;                                    \
        template <class... Strings>                                                             \
        requires(sizeof...(Strings) == COUNT) explicit MNEMONIC(const Strings&... arguments)    \
            : tessel::host::MessageIdError(kComponent, kMnemonic,                               \
                                           std::vector<tessel::host::MessageArgument>{          \
                                               tessel::host::MessageArgument(arguments)...}) {} \
    }
