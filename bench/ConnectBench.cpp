// How long it takes to connect a head, and to disconnect it in a scan: the virtual head, or the
// instant head when its library is preloaded.
//
//     connect_bench [width height]

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

#include "Connection.h"
#include "Report.h"
#include "SetMeter.h"
#include "virtual_head/Request.h"

namespace {

constexpr int kConnects = 100;

template <class Work>
double Milliseconds(Work&& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - begin;
    return took.count();
}

}  // namespace

int main(int argc, char** argv) {
    bench::SilenceLibrary();
    const bool hasSize = argc == 3;
    const int width = hasSize ? std::atoi(argv[1]) : 1280;
    const int height = hasSize ? std::atoi(argv[2]) : 1024;
    std::string error;
    if (!Korvex3Sync::virtual_head::RequestVirtualHead("default", error)) {
        bench::Fail(error);
    }
    std::vector<double> connects;
    std::vector<double> disconnects;
    for (int i = 0; i <= kConnects; ++i) {
        bench::SetMeter meter(1, 1);
        std::optional<bench::Connection> connection;
        connects.push_back(Milliseconds([&] { connection.emplace(width, height); }));
        connection->StartScan(bench::SetMeter::TakeSet, &meter);
        meter.Wait();
        disconnects.push_back(Milliseconds([&] { connection.reset(); }));
    }
    connects.erase(connects.begin());  // the virtual head draws its scene in the first one
    disconnects.erase(disconnects.begin());
    bench::PrintSpread("connect", connects, "ms");
    bench::PrintSpread("disconnect in a scan", disconnects, "ms");
}
