#include "Completion.h"

#include <vector>

#include "Words.h"

namespace Tool {

namespace {

using Words = std::vector<std::string>;

Words namesOf(const CLI::Option& option)
{
    Words names;
    for (const std::string& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

// The values of an option that takes one of a set stand in its type, as in TEXT:{now,late}.
std::string choicesOf(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{');
    const std::size_t close = type.find('}');
    if (open == std::string::npos || close == std::string::npos) {
        return {};
    }
    std::string choices = type.substr(open + 1, close - open - 1);
    for (char& byte : choices) {
        byte = byte == ',' ? ' ' : byte;
    }
    return choices;
}

// The shell command that fills COMPREPLY with an option's values.
std::string valueCommand(const CLI::Option& option)
{
    const std::string choices = choicesOf(option);
    if (!choices.empty()) {
        return "COMPREPLY=($(compgen -W '" + choices + "' -- \"$word\"))";
    }
    const bool isFolder = option.get_type_name().find("DIR") != std::string::npos;
    return isFolder ? "COMPREPLY=($(compgen -d -- \"$word\"))" : "COMPREPLY=()";
}

std::string patternOf(const std::string& command, const Words& optionNames)
{
    std::string pattern;
    for (const std::string& name : optionNames) {
        pattern += (pattern.empty() ? "" : "|") + ("'" + command + ":" + name + "'");
    }
    return pattern;
}

// What follows an option that takes a value.
std::string valueCases(const CLI::App& command)
{
    std::string cases;
    for (const CLI::Option* option : command.get_options()) {
        if (option->nonpositional() && option->get_expected_max() > 0) {
            cases += "        " + patternOf(command.get_name(), namesOf(*option)) + ") " +
                     valueCommand(*option) + "; return ;;\n";
        }
    }
    return cases;
}

// What else a command takes: its options, and the choices of its positional arguments.
std::string wordCase(const CLI::App& command)
{
    Words words;
    for (const CLI::Option* option : command.get_options()) {
        const Words names = namesOf(*option);
        words.insert(words.end(), names.begin(), names.end());
        if (option->get_positional() && !choicesOf(*option).empty()) {
            words.push_back(choicesOf(*option));
        }
    }
    return "        '" + command.get_name() + "') words='" + joined(words) + "' ;;\n";
}

std::string bashScript(const CLI::App& app)
{
    Words commands;
    Words topWords;
    std::string values;
    std::string words;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        commands.push_back(command->get_name());
        values += valueCases(*command);
        words += wordCase(*command);
    }
    for (const CLI::Option* option : app.get_options()) {
        const Words names = namesOf(*option);
        topWords.insert(topWords.end(), names.begin(), names.end());
    }
    const std::string name = app.get_name();
    return "# Completion of " + name + " for bash; source it.\n_" + name +
           "() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command= words= i\n"
           "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
           "        case ${COMP_WORDS[i]} in -*) ;; *) command=${COMP_WORDS[i]}; break ;; esac\n"
           "    done\n"
           "    case $command:$previous in\n" +
           values +
           "    esac\n"
           "    case $command in\n"
           "        '') words='" +
           joined(commands) + " " + joined(topWords) + "' ;;\n" + words +
           "    esac\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
           "}\n"
           "complete -F _" +
           name + " " + name + "\n";
}

}  // namespace

std::string completionScript(const CLI::App& app, const std::string& shell)
{
    // The bridge is part of zsh; a shell without its own completion set up gets that first.
    const std::string zshPrelude =
        "(( $+functions[compdef] )) || { autoload -U compinit && compinit; }\n"
        "autoload -U +X bashcompinit && bashcompinit\n";
    return (shell == "zsh" ? zshPrelude : "") + bashScript(app);
}

}  // namespace Tool
