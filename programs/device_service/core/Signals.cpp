#include "device_service/core/Signals.h"

#include <QStringList>
#include <QVariant>
#include <array>

#include "platform/include/ImageSetNotice.h"
#include "platform/link/HubOperations.h"

namespace Korvex3Sync::device_service {

namespace {

/// The version of the signals, which nobody examines.
const QString kSignalVersion("1");

}  // namespace

link::Signal SignalOf(const SetNotice& set) {
    using namespace notice;
    QStringList segments;
    for (const std::string& segment : set.segments) {
        segments.append(QString::fromStdString(segment));
    }
    QVariantList figures;
    for (const Figure& figure : kDirectModeFigures) {
        figures.append(QVariant::fromValue<qulonglong>(set.statistics.*figure.member));
    }
    std::array<QVariant, kElements> list;
    list[kKind] = set.color ? "ColorImage" : "GrayImage";
    list[kSegments] = segments;
    list[kFrames] = 1;
    list[kNumber] = QVariant::fromValue<qulonglong>(set.counts.sets);
    list[kNotWritten] = QVariant::fromValue<qulonglong>(set.counts.notWritten);
    list[kNotSent] = QVariant::fromValue<qulonglong>(set.counts.noticesNotSent);
    list[kFigures] = figures;
    list[kMoreFollow] = set.moreFollow;
    list[kDevice] = QVariant::fromValue<qlonglong>(set.device);
    return {link::Signal::Kind::Callback, link::kServiceName, "ScanCallBack",
            QVariantList(list.begin(), list.end()), kSignalVersion};
}

link::Signal SignalOf(unsigned char statusA, unsigned char statusB) {
    return {link::Signal::Kind::Message,
            link::kServiceName,
            "Status",
            {link::kServiceName, QVariant(), QString::number(statusA), static_cast<int>(statusB)},
            kSignalVersion};
}

}  // namespace Korvex3Sync::device_service
