#include "Tokenizer.h"

#include <cstdlib>

namespace scenario {

std::optional<std::vector<Token>> tokenize(const std::string &line, std::string &error)
{
    std::vector<Token> tokens;
    size_t i = 0;
    while (i < line.size()) {
        if (line[i] == ' ' || line[i] == '\t' || line[i] == '\r') {
            ++i;
            continue;
        }
        Token token;
        if (line[i] == '"') {
            token.quoted = true;
            ++i;
            bool closed = false;
            while (i < line.size()) {
                if (line[i] == '"') {
                    if (i + 1 < line.size() && line[i + 1] == '"') {
                        token.text += '"';
                        i += 2;
                        continue;
                    }
                    ++i;
                    closed = true;
                    break;
                }
                token.text += line[i++];
            }
            if (!closed) {
                error = "a text is not closed with a double quote";
                return std::nullopt;
            }
        } else {
            while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '\r')
                token.text += line[i++];
        }
        tokens.push_back(std::move(token));
    }
    return tokens;
}

std::vector<std::string> splitReference(const std::string &reference)
{
    std::vector<std::string> parts;
    std::string current;
    int depth = 0;
    for (char c : reference) {
        if (c == '(')
            ++depth;
        else if (c == ')')
            --depth;
        if (c == '.' && depth == 0) {
            parts.push_back(current);
            current.clear();
        } else {
            current += c;
        }
    }
    parts.push_back(current);
    return parts;
}

NameWithArgs parseNameWithArgs(const std::string &segment)
{
    NameWithArgs result;
    const size_t open = segment.find('(');
    if (open == std::string::npos) {
        result.name = segment;
        return result;
    }
    result.name = segment.substr(0, open);
    if (segment.back() != ')') {
        result.valid = false;
        return result;
    }
    const std::string inside = segment.substr(open + 1, segment.size() - open - 2);
    size_t start = 0;
    while (start <= inside.size()) {
        size_t comma = inside.find(',', start);
        if (comma == std::string::npos)
            comma = inside.size();
        const std::string number = inside.substr(start, comma - start);
        char *end = nullptr;
        const long v = std::strtol(number.c_str(), &end, 10);
        if (number.empty() || *end != '\0') {
            result.valid = false;
            return result;
        }
        result.args.push_back(static_cast<int>(v));
        start = comma + 1;
    }
    return result;
}

} // namespace scenario
