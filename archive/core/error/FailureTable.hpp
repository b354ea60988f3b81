#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include <archive/core/error/NullArchiveRule.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <host/MessageArgument.hpp>

namespace tessel::io::archive::core {

// The archive formats a row of a failure table covers.
class FormatSet {
  public:
    constexpr FormatSet(std::initializer_list<ArchiveFormat> formats) {
        for (const ArchiveFormat format : formats) {
            bits_ |= bit(format);
        }
    }
    static constexpr FormatSet any() { return FormatSet(~std::uint32_t{0}); }
    constexpr bool contains(ArchiveFormat format) const { return (bits_ & bit(format)) != 0; }

  private:
    explicit constexpr FormatSet(std::uint32_t bits) : bits_(bits) {}
    static constexpr std::uint32_t bit(ArchiveFormat format) {
        return std::uint32_t{1} << static_cast<std::uint32_t>(format);
    }
    std::uint32_t bits_ = 0;
};

// The message a row raises, named as its message class names it.
struct RaisedMessage {
    const char* component = nullptr;
    const char* mnemonic = nullptr;
    std::size_t argumentCount = 0;
    // Raised under this identifier instead of component:mnemonic (a message that several
    // identifiers share); null: its own.
    const char* identifier = nullptr;
};

template <class Message>
constexpr RaisedMessage raised(const char* identifier = nullptr) {
    return RaisedMessage{Message::kComponent, Message::kMnemonic, Message::kArgumentCount,
                         identifier};
}

// A row names at most this many arguments; the unused ones are the argument enum's
// first value, None.
inline constexpr std::size_t kMaxFailureArguments = 3;

// Whether every row names as many arguments as its message takes: tables check this at
// compile time.
template <class Row, std::size_t N>
constexpr bool argumentCountsMatch(const Row (&rows)[N]) {
    for (const Row& row : rows) {
        std::size_t named = 0;
        for (const auto argument : row.arguments) {
            named += argument != decltype(argument){} ? 1 : 0;
        }
        if (named != row.message.argumentCount) {
            return false;
        }
    }
    return true;
}

// The first row for the rule whose calls include the table asked for and whose formats
// include the format; rows are tried in order. nullptr: no row.
template <class Row, std::size_t N, class Table, class Accepts>
const Row* findFailureRow(const Row (&rows)[N], NullArchiveRule rule, Table table,
                          ArchiveFormat format, Accepts accepts) {
    for (const Row& row : rows) {
        if (row.rule == rule && row.calls.contains(table) && row.formats.contains(format) &&
            accepts(row)) {
            return &row;
        }
    }
    return nullptr;
}

// Raises the message with its arguments, in order. Never returns.
[[noreturn]] void raiseMessage(const RaisedMessage& message,
                               std::vector<tessel::host::MessageArgument> arguments);

// Raises a row's message, each of its arguments given by argumentOf.
template <class Row, class ArgumentOf>
[[noreturn]] void raiseRow(const Row& row, ArgumentOf argumentOf) {
    std::vector<tessel::host::MessageArgument> arguments;
    for (const auto argument : row.arguments) {
        if (argument != decltype(argument){}) {
            arguments.push_back(argumentOf(argument));
        }
    }
    raiseMessage(row.message, std::move(arguments));
}

// The set of tables (which entry points) a row applies to.
template <class Table>
class TableSet {
  public:
    constexpr TableSet(std::initializer_list<Table> tables) {
        for (const Table table : tables) {
            bits_ |= bit(table);
        }
    }
    constexpr bool contains(Table table) const { return (bits_ & bit(table)) != 0; }

  private:
    static constexpr std::uint32_t bit(Table table) {
        return std::uint32_t{1} << static_cast<std::uint32_t>(table);
    }
    std::uint32_t bits_ = 0;
};

}  // namespace tessel::io::archive::core
