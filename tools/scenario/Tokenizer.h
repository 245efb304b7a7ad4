#pragma once

#include <optional>
#include <string>
#include <vector>

namespace scenario {

// One word of a scenario line: a bare word, or a text in double quotes ("" inside is one quote).
struct Token {
    std::string text;
    bool quoted = false;
};

// The words of a line; nullopt and a message when a text is not closed.
std::optional<std::vector<Token>> tokenize(const std::string &line, std::string &error);

// "frmMain.mainlist.List(3)" -> {"frmMain", "mainlist", "List(3)"}: dots inside brackets stay.
std::vector<std::string> splitReference(const std::string &reference);

// "List(3)" -> name "List", args {3}; "Column(2,1)" -> {2,1}; "mainlist" -> no args.
struct NameWithArgs {
    std::string name;
    std::vector<int> args;
    bool valid = true;
};
NameWithArgs parseNameWithArgs(const std::string &segment);

} // namespace scenario
