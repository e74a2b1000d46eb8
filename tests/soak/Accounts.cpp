#include "soak/Accounts.h"

#include <cstdint>
#include <sstream>

namespace Korvex3Sync::tests::soak {
namespace {

using virtual_head::FrameCounts;
using virtual_head::HeadCounts;

constexpr std::uint64_t FrameCounts::*kFrameFigures[] = {
    &FrameCounts::made,     &FrameCounts::repeated,   &FrameCounts::lost,
    &FrameCounts::heldBack, &FrameCounts::unattended, &FrameCounts::lostInBuffers,
    &FrameCounts::handed,   &FrameCounts::torn,       &FrameCounts::misSized,
    &FrameCounts::fetched,  &FrameCounts::dropped};

struct Figure {
    const char* name;
    std::uint64_t ScanStatistics::*member;
};
constexpr Figure kFigures[] = {{"frames accepted", &ScanStatistics::framesAccepted},
                               {"sets delivered", &ScanStatistics::setsDelivered},
                               {"with colour", &ScanStatistics::setsWithColor},
                               {"failed snaps", &ScanStatistics::failedSnaps},
                               {"refused frames", &ScanStatistics::refusedFrames},
                               {"rejected geometry", &ScanStatistics::rejectedGeometry},
                               {"undecodable frames", &ScanStatistics::undecodableFrames},
                               {"unrouted frames", &ScanStatistics::unroutedFrames},
                               {"colour without mono", &ScanStatistics::colorWithoutMono},
                               {"mono without colour", &ScanStatistics::monoWithoutColor},
                               {"repeated keys", &ScanStatistics::repeatedKeys},
                               {"sets dropped", &ScanStatistics::setsDropped},
                               {"missing keys", &ScanStatistics::missingKeys},
                               {"sets without callback", &ScanStatistics::setsWithoutCallback},
                               {"colour for snapshots", &ScanStatistics::colorForSnapshot},
                               {"sets pending at the end", &ScanStatistics::setsPending}};

// Of a level, as heldBack, this may be below zero; it adds up modulo 2^64 all the same.
FrameCounts Minus(const FrameCounts& after, const FrameCounts& before) {
    FrameCounts difference;
    for (auto figure : kFrameFigures) {
        difference.*figure = after.*figure - before.*figure;
    }
    return difference;
}

void Compare(const char* place, std::uint64_t in, std::uint64_t out, std::uint64_t slack,
             std::vector<std::string>& differences) {
    if (out > in || in - out > slack) {
        differences.push_back(std::string(place) + ": " + std::to_string(in) + " came in, " +
                              std::to_string(out) + " are accounted for");
    }
}

}  // namespace

HeadCounts Between(const HeadCounts& before, const HeadCounts& after) {
    HeadCounts difference;
    difference.triggers = after.triggers - before.triggers;
    difference.keysSkipped = after.keysSkipped - before.keysSkipped;
    difference.colorOnly = after.colorOnly - before.colorOnly;
    difference.delayed = after.delayed - before.delayed;
    difference.mono = Minus(after.mono, before.mono);
    difference.color = Minus(after.color, before.color);
    return difference;
}

std::vector<std::string> Differences(const HeadCounts& head, const ScanStatistics& library) {
    std::vector<std::string> differences;
    Compare("triggers", head.triggers, head.keysSkipped + head.mono.made + head.colorOnly, 0,
            differences);
    for (const auto& [name, frames] :
         {std::pair{"mono", head.mono}, std::pair{"colour", head.color}}) {
        Compare((std::string(name) + " exposures at the sensors").c_str(),
                frames.made + frames.repeated,
                frames.lost + frames.unattended + frames.handed + frames.lostInBuffers +
                    frames.heldBack,
                0, differences);
        Compare((std::string(name) + " frames in the camera").c_str(), frames.handed,
                frames.fetched + frames.dropped, 0, differences);
    }
    Compare("frames in the grab thread", head.mono.fetched + head.color.fetched,
            library.framesAccepted + library.refusedFrames + library.rejectedGeometry, 0,
            differences);
    // Colour frames of sets without a callback are not told apart from those of delivered sets.
    Compare("frames in the pairing", library.framesAccepted,
            library.setsDelivered + library.setsWithoutCallback + library.setsDropped +
                library.setsPending + library.setsWithColor + library.colorWithoutMono +
                library.colorForSnapshot + library.undecodableFrames + library.unroutedFrames,
            library.setsWithoutCallback, differences);
    return differences;
}

void Add(const ScanStatistics& connection, ScanStatistics& all) {
    for (const Figure& figure : kFigures) {
        all.*figure.member += connection.*figure.member;
    }
    all.callbackLongestUs = std::max(all.callbackLongestUs, connection.callbackLongestUs);
}

std::string Text(const ScanStatistics& statistics) {
    std::ostringstream text;
    for (const Figure& figure : kFigures) {
        text << "  " << figure.name << " " << statistics.*figure.member << "\n";
    }
    text << "  longest callback " << statistics.callbackLongestUs << " us\n";
    return text.str();
}

}  // namespace Korvex3Sync::tests::soak
