#include "korvexctl/head/HeadFileText.h"

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

constexpr std::string_view kScene = R"([scene]
# What the sensors see where no images are replayed: a plate with a sphere and a box on it, under
# the light of the board. x runs to the right, y down, z away from the head.

# Focal length of the sensors. Pixels of an image of 1280 x 1024, 200 to 10000.
focal_length = 1500
# Space between the two sensors. Millimetres, 10 to 500.
baseline = 150
# Angle by which each sensor is turned towards the other. Degrees, 0 to 45.
toe_in = 13
# From the middle between the sensors to the plate. Millimetres, 100 to 1000.
distance = 320

# Middle of the sphere, seen from the middle of the plate: x, y, z. Millimetres, -500 to 500 each.
sphere_center = [-34, -14, -18]
# Radius of the sphere. Millimetres, 1 to 200.
sphere_radius = 40
# Middle of the box, seen from the middle of the plate: x, y, z. Millimetres, -500 to 500 each.
box_center = [50, 30, -16]
# Edges of the box along x, y and z. Millimetres, 1 to 400 each.
box_size = [64, 44, 32]
# Angle by which the box is turned on the plate. Degrees, -180 to 180.
box_turn = 20

# Where laser lines, patterns and infrared light come from, seen from the middle between the
# sensors: x, y, z. Millimetres, -300 to 300 each.
projector = [0, -70, 0]
# Lines of each of the two sets of laser lines. A count, 1 to 25.
laser_lines = 9
# Space between two lines at the plate. Millimetres, 2 to 100.
laser_spacing = 22
# Width of a line at half of its peak, at the plate. Millimetres, 0.1 to 5.
laser_width = 0.8
# Angle of the lines from the vertical, one set to each side. Degrees, 0 to 60.
laser_angle = 20

# Steps of the closed path on which the object moves on, one for each trigger. A count, 1 to 8.
poses = 4
# How far the path leads from its middle. Millimetres, 0 to 30.
motion = 6
# How far the object turns on it. Degrees, 0 to 15.
swing = 4
)";

constexpr std::string_view kFaults = R"([faults]
# Seed of the draws of all faults that have a chance. A whole number, 0 or more.
seed = 1

# Faults that begin by themselves: one entry each.
#[[fault]]
# What happens: fail, slow, hang, board-vanish, board-return, board-mute, board-answer, board-late,
# camera-vanish, camera-return, camera-stop, lose-mono, lose-color, lose-both, tear-mono,
# tear-color, mis-size-mono, mis-size-color, repeat-mono, repeat-color, delay or skip-keys.
#what = "lose-color"
# How often it happens. A count, 1 to 1000000.
#times = 2
# When it begins: with this trigger, counted from 0, 0 to 1000000000 ...
#at_trigger = 100
# ... or with this chance at each trigger, above 0, at most 1.
#chance = 0.01

#[[fault]]
# Answers that come late for once.
#what = "slow"
# fail, slow and hang only: the platform function that meets it.
#call = "zr3DQueryCurrentStatus"
#times = 3
# slow and board-late only: how much longer it takes. Milliseconds, 1 to 600000.
#extra_ms = 200
# When it begins after the head was asked for. Milliseconds, 0 to 86400000.
#at_ms = 10000

#[[fault]]
# A board that opens and does not answer, 20 s after the head was asked for.
#what = "board-mute"
#at_ms = 20000
# board-vanish, board-mute, camera-vanish and hang only: it ends by itself after this time.
# Milliseconds, 1 to 86400000.
#for_ms = 2000
# board-mute only: how many further opens stay without an answer. A count, 1 to 1000.
#opens = 1

#[[fault]]
# The frames of one trigger that come late.
#what = "delay"
#at_trigger = 500
# delay only: how many triggers later the frames come. A count, 1 to 10000.
#by_triggers = 2
)";

constexpr std::array kTables{kIntroduction, kCamera, kBoard, kScene, kReplay, kFaults};

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
