#include "service/SetAccount.h"

#include "platform/include/ImageSetNotice.h"

namespace Korvex3Sync {
namespace {

constexpr double kHalf = 0.5;
constexpr double kNearlyAll = 0.99;

std::uint64_t Number(const QList<QVariant>& list, int element) {
    return list.value(element).toULongLong();
}

/// The figures of direct mode in a notice; 0 where it has none.
ScanStatistics FiguresOf(const QList<QVariant>& list) {
    ScanStatistics statistics;
    const QVariantList figures = list.value(notice::kFigures).toList();
    int element = 0;
    for (const notice::Figure& figure : notice::kDirectModeFigures) {
        statistics.*figure.member = Number(figures, element++);
    }
    return statistics;
}

void Add(ScanStatistics& sum, const ScanStatistics& more) {
    for (const notice::Figure& figure : notice::kDirectModeFigures) {
        sum.*figure.member += more.*figure.member;
    }
    sum.setsNotWritten += more.setsNotWritten;
    sum.setsOverwritten += more.setsOverwritten;
    sum.noticesLost += more.noticesLost;
}

std::uint64_t Difference(std::uint64_t more, std::uint64_t less) {
    return more > less ? more - less : 0;
}

}  // namespace

void SetAccount::Ends::Count(SetFate fate, bool color) {
    ++notices;
    switch (fate) {
        case SetFate::Delivered:
            ++delivered;
            withColor += color ? 1 : 0;
            break;
        case SetFate::WithoutCallback:
            ++withoutCallback;
            break;
        case SetFate::Unreadable:
            ++unreadable;
            break;
        case SetFate::NoMemory:
            ++noMemory;
            break;
    }
}

void SetAccount::Start(std::int64_t device) {
    m_device = device;
    m_service = {};
    m_written = 0;
    m_ends = {};
}

void SetAccount::Begin(std::int64_t device) {
    const os::MutexGuard guard(m_mutex);
    Start(device);
    m_before = {};
    m_times = {};
    m_lastSign.reset();
}

void SetAccount::Continue(std::int64_t device) {
    const os::MutexGuard guard(m_mutex);
    ScanStatistics ended = OfThisDevice();
    ended.setsPending = 0;  // they ended with their service
    Add(m_before, ended);
    Start(device);
}

void SetAccount::Reconnected() {
    const auto now = Clock::now();
    const os::MutexGuard guard(m_mutex);
    ++m_before.serviceReconnects;
    if (m_lastSign) {
        m_before.serviceGapMs += static_cast<std::uint64_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(now - *m_lastSign).count());
    }
    m_lastSign = now;
}

void SetAccount::SetEnded(const QList<QVariant>& noticeList, SetFate fate,
                          std::optional<Clock::duration> took) {
    const os::MutexGuard guard(m_mutex);
    const bool numbered = noticeList.size() >= notice::kElements;
    if (numbered && noticeList[notice::kDevice].toLongLong() != m_device) {
        return;
    }
    m_ends.Count(fate, noticeList.value(notice::kKind).toString() != "GrayImage");
    if (numbered) {
        m_service = FiguresOf(noticeList);
        m_service.setsNotWritten = Number(noticeList, notice::kNotWritten);
        m_written = Difference(Number(noticeList, notice::kNumber), m_service.setsNotWritten);
        // This set is no longer waiting there.
        m_service.setsPending = Difference(m_service.setsPending, 1);
    }
    if (took) {
        m_times.Add(*took);
    }
    m_lastSign = Clock::now();
}

ScanStatistics SetAccount::OfThisDevice() const {
    ScanStatistics statistics = m_service;
    statistics.setsDelivered = m_ends.delivered;
    statistics.setsWithColor = m_ends.withColor;
    statistics.setsWithoutCallback += m_ends.withoutCallback;
    statistics.setsDropped += m_ends.noMemory;
    statistics.setsOverwritten = m_ends.unreadable;
    statistics.noticesLost = Difference(m_written, m_ends.notices);
    return statistics;
}

ScanStatistics SetAccount::Read() const {
    const os::MutexGuard guard(m_mutex);
    ScanStatistics statistics = m_before;
    Add(statistics, OfThisDevice());
    statistics.callbackP50Us = m_times.Percentile(kHalf);
    statistics.callbackP99Us = m_times.Percentile(kNearlyAll);
    statistics.callbackLongestUs = m_times.Longest();
    return statistics;
}

}  // namespace Korvex3Sync
