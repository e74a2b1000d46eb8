#include "virtual_head/config/UserMemoryKeys.h"

#include <algorithm>
#include <set>
#include <vector>

#include "platform/board/protocol/Commands.h"
#include "platform/text/NearNames.h"

namespace Korvex3Sync::virtual_head {
namespace {

WrongPage WrongEntry(const toml::node& node, const std::string& what) {
    return {static_cast<int>(node.source().begin.line), "[[board.user_memory]] " + what};
}

std::optional<WrongPage> ReadBytes(const toml::node& node, std::vector<std::uint8_t>& content) {
    const toml::array* bytes = node.as_array();
    if (bytes == nullptr) {
        return WrongEntry(node, "bytes: an array of numbers is expected");
    }
    for (const toml::node& byte : *bytes) {
        const std::optional<std::int64_t> value = byte.value_exact<std::int64_t>();
        if (!value || *value < 0 || *value > 255) {
            return WrongEntry(byte, "bytes: a number from 0 to 255 is expected");
        }
        content.push_back(static_cast<std::uint8_t>(*value));
    }
    return std::nullopt;
}

struct Page {
    std::optional<std::int64_t> number;
    std::optional<std::vector<std::uint8_t>> content;
};

std::optional<WrongPage> ReadValue(const toml::key& key, const toml::node& value, Page& page) {
    if (key == "page") {
        page.number = value.value_exact<std::int64_t>();
        if (!page.number || *page.number < 0 || *page.number >= board::kUserPages) {
            return WrongEntry(value, "page: a number from 0 to " +
                                         std::to_string(board::kUserPages - 1) + " is expected");
        }
        return std::nullopt;
    }
    if (key != "text" && key != "bytes") {
        return WrongPage{static_cast<int>(key.source().begin.line),
                         "unknown key \"" + std::string(key.str()) + "\" in [[board.user_memory]]" +
                             text::DidYouMean(key.str(), {"page", "text", "bytes"})};
    }
    if (page.content) {
        return WrongEntry(value, "text and bytes exclude each other");
    }
    page.content.emplace();
    if (key == "bytes") {
        return ReadBytes(value, *page.content);
    }
    const std::optional<std::string> text = value.value_exact<std::string>();
    if (!text) {
        return WrongEntry(value, "text: a text is expected");
    }
    page.content->assign(text->begin(), text->end());
    return std::nullopt;
}

}  // namespace

std::optional<WrongPage> ReadUserMemory(const toml::node& pages,
                                        std::array<std::uint8_t, 4096>& memory) {
    const toml::array* entries = pages.as_array();
    if (entries == nullptr) {
        return WrongEntry(pages, "an array of tables is expected");
    }
    std::set<std::int64_t> seen;
    for (const toml::node& entry : *entries) {
        const toml::table* values = entry.as_table();
        if (values == nullptr) {
            return WrongEntry(entry, "an array of tables is expected");
        }
        Page page;
        for (const auto& [key, value] : *values) {
            if (auto wrong = ReadValue(key, value, page)) {
                return wrong;
            }
        }
        if (!page.number || !page.content) {
            return WrongEntry(entry, "missing key: give page, and text or bytes");
        }
        if (!seen.insert(*page.number).second) {
            return WrongEntry(entry, "page " + std::to_string(*page.number) + " is given twice");
        }
        if (page.content->size() > std::size_t{board::kUserPageSize}) {
            return WrongEntry(entry, "the content has more than " +
                                         std::to_string(board::kUserPageSize) + " bytes");
        }
        std::copy(page.content->begin(), page.content->end(),
                  memory.begin() + *page.number * board::kUserPageSize);
    }
    return std::nullopt;
}

}  // namespace Korvex3Sync::virtual_head
