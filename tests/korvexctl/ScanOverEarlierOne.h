#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "korvexctl/ScanOverHead.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

/// A scan into a folder that has one.
class ScanOverEarlierOne : public ScanOverHead {
protected:
    ScanOverEarlierOne() {
        m_options.folder = m_folder.Path();
        for (const char* name : kEarlier) {
            WriteText(m_folder.Path() / name, "of before");
        }
    }

    void ExpectEarlierScan() const {
        EXPECT_THAT(FileNames(m_folder.Path()), ::testing::ElementsAreArray(kEarlier));
        for (const char* name : kEarlier) {
            EXPECT_EQ(ReadText(m_folder.Path() / name), "of before") << name;
        }
    }

    static constexpr std::array kEarlier{"contact-sheet.png", "scan.json", "set_000_left.png",
                                         "set_007_left.png"};
    TemporaryFolder m_folder;
};

}  // namespace Korvex3Sync::tests
