#pragma once

#include <cctype>
#include <string>
#include <vector>

namespace Korvex3Sync::tests::support {

/// A name for a case of a parameterised test: the letters and digits of the text, everything else
/// as '_'. "=" and a minus sign become words, because cases differ in them.
inline std::string CaseName(const std::string& text) {
    std::string name;
    const auto separate = [&name] {
        if (!name.empty() && name.back() != '_') {
            name += '_';
        }
    };
    for (std::size_t place = 0; place < text.size(); ++place) {
        const auto letter = static_cast<unsigned char>(text[place]);
        if (std::isalnum(letter) != 0) {
            name += text[place];
            continue;
        }
        separate();
        if (letter == '=') {
            name += "is_";
        } else if (letter == '-' &&
                   std::isdigit(static_cast<unsigned char>(text[place + 1])) != 0) {
            name += "minus_";
        }
    }
    while (!name.empty() && name.back() == '_') {
        name.pop_back();
    }
    return name.empty() ? "empty" : name;
}

/// The same for the words of a command line.
inline std::string CaseName(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + (word.empty() ? std::string("empty") : word);
    }
    return CaseName(text);
}

}  // namespace Korvex3Sync::tests::support
