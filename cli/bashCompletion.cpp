#include "CommandTable.hpp"
#include "DocumentGenerators.hpp"

namespace tqarchive {

namespace {

std::string join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

// The spellings of the options, each command's own and the common ones.
std::string optionWords(const std::vector<OptionId>& ids) {
    std::vector<std::string> words;
    for (OptionId id : ids) {
        for (const std::string& spelling : CommandTable::spellings(CommandTable::option(id))) {
            words.push_back(spelling);
        }
    }
    return join(words);
}

// The case pattern of the options that take a value of the kind ("-C|-d").
std::string pattern(ValueKind kind) {
    std::vector<std::string> spellings;
    for (const Option& option : CommandTable::options()) {
        if (option.kind == kind && !option.value.empty()) {
            for (const std::string& name : CommandTable::names(option)) {
                spellings.push_back(name);
            }
        }
    }
    std::string text;
    for (const std::string& spelling : spellings) {
        text += (text.empty() ? "" : "|") + spelling;
    }
    return text;
}

}  // namespace

std::string bashCompletion() {
    std::vector<std::string> commands;
    for (const Command& command : CommandTable::commands()) {
        commands.push_back(command.name);
    }
    std::string script =
        "# bash completion for tqarchive\n"
        "_tqarchive() {\n"
        "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
        "    local command= i\n"
        "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "        case ${COMP_WORDS[i]} in\n"
        "            " +
        [&] {
            std::string alternatives;
            for (const std::string& name : commands) {
                alternatives += (alternatives.empty() ? "" : "|") + name;
            }
            return alternatives;
        }() +
        ") command=${COMP_WORDS[i]}; break ;;\n"
        "        esac\n"
        "    done\n"
        "    case $prev in\n"
        "        " +
        pattern(ValueKind::Folder) +
        ") COMPREPLY=($(compgen -d -- \"$cur\")); return ;;\n"
        "        " +
        pattern(ValueKind::File) + ") COMPREPLY=($(compgen -f -- \"$cur\")); return ;;\n";
    for (const Option& option : CommandTable::options()) {
        if (option.kind == ValueKind::Choice) {
            script += "        " + option.names + ") COMPREPLY=($(compgen -W \"" +
                      join(option.choices) + "\" -- \"$cur\")); return ;;\n";
        } else if (option.kind == ValueKind::None && !option.value.empty() &&
                   !option.valueOptional) {
            script += "        " + option.names + ") return ;;\n";
        }
    }
    script +=
        "    esac\n"
        "    if [[ -z $command ]]; then\n"
        "        COMPREPLY=($(compgen -W \"" +
        join(commands) + " " + optionWords(CommandTable::common()) +
        "\" -- \"$cur\"))\n"
        "        return\n"
        "    fi\n"
        "    if [[ $cur == -* ]]; then\n"
        "        case $command in\n";
    for (const Command& command : CommandTable::commands()) {
        std::vector<OptionId> ids;
        for (const OptionUse& use : command.options) {
            ids.push_back(use.id);
        }
        ids.insert(ids.end(), CommandTable::common().begin(), CommandTable::common().end());
        script += "            " + command.name + ") COMPREPLY=($(compgen -W \"" +
                  optionWords(ids) + "\" -- \"$cur\")) ;;\n";
    }
    script +=
        "        esac\n"
        "        return\n"
        "    fi\n"
        "    COMPREPLY=($(compgen -f -- \"$cur\"))\n"
        "}\n"
        "complete -o filenames -o bashdefault -F _tqarchive tqarchive\n";
    return script;
}

}  // namespace tqarchive
