#include "device_service/core/Signals.h"

#include <QStringList>
#include <QVariant>
#include <array>

#include "platform/link/HubOperations.h"

namespace Korvex3Sync::device_service {

namespace {

using S = ScanStatistics;

constexpr std::array<Figure, 19> kFigures{{
    {"framesAccepted", &S::framesAccepted, false},
    {"setsDelivered", &S::setsDelivered, false},
    {"setsWithColor", &S::setsWithColor, false},
    {"setsPending", &S::setsPending, false},
    {"failedSnaps", &S::failedSnaps, false},
    {"refusedFrames", &S::refusedFrames, true},
    {"rejectedGeometry", &S::rejectedGeometry, true},
    {"undecodableFrames", &S::undecodableFrames, true},
    {"unroutedFrames", &S::unroutedFrames, true},
    {"colorWithoutMono", &S::colorWithoutMono, true},
    {"monoWithoutColor", &S::monoWithoutColor, true},
    {"repeatedKeys", &S::repeatedKeys, false},
    {"setsDropped", &S::setsDropped, true},
    {"missingKeys", &S::missingKeys, true},
    {"setsWithoutCallback", &S::setsWithoutCallback, true},
    {"colorForSnapshot", &S::colorForSnapshot, false},
    {"callbackP50Us", &S::callbackP50Us, false},
    {"callbackP99Us", &S::callbackP99Us, false},
    {"callbackLongestUs", &S::callbackLongestUs, false},
}};
static_assert(sizeof(ScanStatistics) == kFigures.size() * sizeof(std::uint64_t),
              "a figure is missing");

/// The version of the signals, which nobody examines.
const QString kSignalVersion("1");

}  // namespace

std::span<const Figure> Figures() {
    return kFigures;
}

link::Signal SignalOf(const SetNotice& notice) {
    QStringList segments;
    for (const std::string& segment : notice.segments) {
        segments.append(QString::fromStdString(segment));
    }
    QVariantList figures;
    for (const Figure& figure : kFigures) {
        figures.append(QVariant::fromValue<qulonglong>(notice.statistics.*figure.member));
    }
    return {link::Signal::Kind::Callback,
            link::kServiceName,
            "ScanCallBack",
            {QVariant(), QVariant(), notice.color ? "ColorImage" : "GrayImage", segments, 1,
             QVariant::fromValue<qulonglong>(notice.counts.sets),
             QVariant::fromValue<qulonglong>(notice.counts.notWritten),
             QVariant::fromValue<qulonglong>(notice.counts.noticesNotSent), QVariant(figures),
             notice.moreFollow},
            kSignalVersion};
}

link::Signal SignalOf(unsigned char statusA, unsigned char statusB) {
    return {link::Signal::Kind::Message,
            link::kServiceName,
            "Status",
            {link::kServiceName, QVariant(), QString::number(statusA), static_cast<int>(statusB)},
            kSignalVersion};
}

}  // namespace Korvex3Sync::device_service
