#include "SetMeter.h"

#include "Connection.h"
#include "Report.h"

namespace bench {

void SetMeter::Count() {
    ++m_count;
    if (m_count == m_first) {
        m_begin = std::chrono::steady_clock::now();
    } else if (m_count == m_last) {
        m_end = std::chrono::steady_clock::now();
        m_done.set_value();
    }
}

double SetMeter::Wait() {
    if (m_done.get_future().wait_for(std::chrono::minutes(1)) != std::future_status::ready) {
        Fail("the sets did not arrive within a minute");
    }
    const std::chrono::duration<double, std::nano> took = m_end - m_begin;
    return took.count() / static_cast<double>(m_last - m_first);
}

void SetMeter::TakeSet(const void* const& context, std::vector<unsigned char*>& images, const int&,
                       const int&, std::vector<int>&) {
    if (images.size() == 2) {
        static_cast<SetMeter*>(const_cast<void*>(context))->Count();
    }
}

double NanosecondsPerSet(int width, int height, std::uint64_t warmUp, std::uint64_t sets) {
    SetMeter meter(warmUp, sets);
    Connection connection(width, height);
    connection.StartScan(SetMeter::TakeSet, &meter);
    return meter.Wait();
}

}  // namespace bench
