#include "korvexctl/HeadFileText.h"

#include <array>
#include <string_view>

namespace Korvex3Sync::korvexctl {

namespace {

// The file as it is written, table by table. Prose begins with "# ", an example without default
// with
// "#" alone.

constexpr std::string_view kIntroduction = R"(# A virtual head for Korvex3Sync. Use it with
#   korvexctl --virtual=FILE ...
# or, with any program, with the environment variable KORVEX_VIRTUAL_HEAD=FILE.
#
# Each key stands here with its default, and may be left out. A line that begins with # and no
# space is an example of something that has no default: take its # away to use it.
)";

constexpr std::string_view kCamera = R"([camera]
# What discovery asks for. Text, 2 to 64 characters that begin with KV.
type = "KV00"
# Serial that both sensors share. Text, 3 to 64 characters that begin with KV.
serial = "KV00A1001"
# Size of one image. Pixels, 16 to 2000 each; width times height is a multiple of 4.
width = 1280
height = 1024
# Whether the head makes colour frames. true or false.
color = true
# Gain range of the sensors. Steps without unit, 0 to 63 each; low is not above high.
gain_low = 0
gain_high = 16
# Frames that wait in each opened camera; one that finds no room is lost. A count, 1 to 4096.
buffers = 64
)";

constexpr std::string_view kBoard = R"([board]
# Serial of the board. Text, 1 to 32 characters.
serial = "VH3267-0001"
# Firmware version that the board tells. Text, 1 to 32 characters.
firmware = "1.4.0"
# Negotiated USB speed: 1 low, 2 full, 3 high, 4 SuperSpeed.
usb_speed = 4

# The board's user memory: one entry for each page that is not empty.
#[[board.user_memory]]
# Page of 256 bytes, 0 to 15, each at most once.
#page = 0
# What it holds from its start, at most 256 bytes: a text, or bytes = [0xFF, 0x00], 0 to 255 each.
#text = "bench 7"
)";

constexpr std::string_view kReplay = R"(# Real images in place of the ones that the head makes.
#[replay]
# Folder with leftNN.png and rightNN.png, and colorNN.png where there is a colour mosaic; relative
# to the folder of this file.
#folder = "pairs"
)";

constexpr std::array kTables{kIntroduction, kCamera, kBoard, kReplay};

}  // namespace

std::string HeadFileText() {
    std::string text;
    for (const std::string_view table : kTables) {
        if (!text.empty()) {
            text += '\n';
        }
        text += table;
    }
    return text;
}

}  // namespace Korvex3Sync::korvexctl
