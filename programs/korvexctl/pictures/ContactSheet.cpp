#include "korvexctl/pictures/ContactSheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "korvexctl/pictures/ImageSet.h"
#include "korvexctl/pictures/Lettering.h"
#include "korvexctl/pictures/TextLines.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kCellWidth = 320;  // pixels; smaller images keep their size
constexpr int kGap = 4;          // pixels between cells and around them
constexpr int kLargeCell = 200;  // pixels of width from which the letters are doubled
constexpr std::uint8_t kGround = 32;
constexpr std::uint8_t kLabel = 230;
constexpr std::uint8_t kHeading = 160;
constexpr std::array kColumns{"left", "right", "colour"};

std::string LabelOf(const KeptImageSet& set, int lost) {
    std::array<char, 120> text{};
    std::snprintf(text.data(), text.size(), "set %d  key %d  %.2f s", set.number, set.key,
                  set.seconds);
    std::string label = text.data();
    if (lost > 0) {
        label +=
            "  - " + std::to_string(lost) + (lost == 1 ? " trigger" : " triggers") + " lost before";
    }
    return label;
}

/// A sensor counts light, and a screen expects about its square root.
void Brighten(Picture& picture) {
    constexpr double kGamma = 2.2;
    constexpr double kWhite = 255;
    static const auto s_brighter = [] {
        std::array<std::uint8_t, 256> table{};
        for (std::size_t i = 0; i < table.size(); ++i) {
            table[i] = static_cast<std::uint8_t>(
                std::lround(kWhite * std::pow(static_cast<double>(i) / kWhite, 1 / kGamma)));
        }
        return table;
    }();
    for (std::uint8_t& byte : picture.bytes) {
        byte = s_brighter[byte];
    }
}

/// Copies a grey or colour cell into a colour picture.
void Paste(const Picture& cell, int x, int y, Picture& sheet) {
    const auto channels = static_cast<std::size_t>(cell.channels);
    auto from = cell.bytes.begin();
    for (int row = 0; row < cell.height; ++row) {
        auto to = sheet.bytes.begin() +
                  (static_cast<std::ptrdiff_t>(y + row) * sheet.width + x) * sheet.channels;
        for (int column = 0; column < cell.width; ++column) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                *to++ = from[static_cast<std::ptrdiff_t>(channels == 1 ? 0 : channel)];
            }
            from += static_cast<std::ptrdiff_t>(channels);
        }
    }
}

}  // namespace

void ContactSheet::Add(const KeptImageSet& set, const std::vector<Picture>& pictures) {
    Row row{LabelOf(set, set.lost - m_lost), {}};
    m_lost = set.lost;
    for (const Picture& picture : pictures) {
        const int width = std::min(picture.width, kCellWidth);
        const int height = std::max(1, picture.height * width / picture.width);
        row.cells.push_back(ScaleDown(picture, width, height));
        if (picture.channels == 1) {
            Brighten(row.cells.back());
        }
    }
    m_rows.push_back(std::move(row));
}

Picture ContactSheet::Compose(const std::vector<std::string>& header) const {
    const int cellWidth = m_rows.front().cells.front().width;
    const int cellHeight = m_rows.front().cells.front().height;
    const bool color = std::any_of(m_rows.begin(), m_rows.end(),
                                   [](const Row& row) { return row.cells.size() > kMonoImages; });
    const std::size_t columns = color ? kColumns.size() : kMonoImages;
    const int scale = cellWidth >= kLargeCell ? 2 : 1;
    const int line = kLetterHeight * scale + 2 * kGap;
    const int columnStep = cellWidth + kGap;
    const int rowStep = line + cellHeight;

    const int width = kGap + static_cast<int>(columns) * columnStep;
    const std::vector<std::string> top =
        BreakLines(header, static_cast<std::size_t>((width - kGap) / (kLetterStep * scale)));
    const int headerStep = kLetterHeight * scale + kGap;
    const int headerHeight = static_cast<int>(top.size()) * headerStep;

    Picture sheet{
        width, headerHeight + line + static_cast<int>(m_rows.size()) * rowStep + kGap, 3, {}};
    sheet.bytes.assign(
        static_cast<std::size_t>(sheet.width) * static_cast<std::size_t>(sheet.height) * 3,
        kGround);
    int y = 0;
    for (const std::string& text : top) {
        DrawText(sheet, kGap, y + kGap, text, scale, kLabel);
        y += headerStep;
    }
    for (std::size_t column = 0; column < columns; ++column) {
        DrawText(sheet, kGap + static_cast<int>(column) * columnStep, y + kGap, kColumns[column],
                 scale, kHeading);
    }
    y += line;
    for (const Row& row : m_rows) {
        DrawText(sheet, kGap, y + kGap, row.label, scale, kLabel);
        int x = kGap;
        for (const Picture& cell : row.cells) {
            Paste(cell, x, y + line, sheet);
            x += columnStep;
        }
        if (row.cells.size() < columns) {
            DrawText(sheet, x + kGap, y + line + kGap, "no colour", scale, kHeading);
        }
        y += rowStep;
    }
    return sheet;
}

}  // namespace Korvex3Sync::korvexctl
