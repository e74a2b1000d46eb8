// What the recording libraries of service mode answer in a program that they are preloaded into.

#include <atomic>
#include <cstdlib>

#include "recorder/RecordedService.h"
#include "recorder/Recorder.h"

namespace Korvex3Sync::tests::recorder {
namespace {

/// A status of the board, and an image set.
void SendSignals() {
    SyncInterface& service = *TheSyncInterface();
    Q_EMIT service.sendMessage("plugin", "message", {"", QVariant(), "7", 1}, "1");
    const QStringList segments{"left", "right", "color"};
    Q_EMIT service.sendCallback("plugin", "callback",
                                {QVariant(), QVariant(), "ColorImage", segments, 1}, "1");
}

/// Two cameras, a device with the id 77, and one image set when the trigger is first switched on.
class Orders {
public:
    Orders() {
        // Programs that the host starts, the one that names functions for a sanitizer among them,
        // have libraries of their own.
        ::unsetenv("LD_PRELOAD");
        ResetService();
        Recorder& recorder = Recorder::Get();
        recorder.SetValue("count", 2);
        recorder.SetValue("id", 77);
        const QByteArray image(1280 * 1024, 'x');
        for (const char* segment : {"left", "right", "color"}) {
            SetSegment(segment, image);
        }
        recorder.OnCall("enableVideoTrigger(77, 4, 1)", [] {
            static std::atomic<bool> sent{false};
            if (!sent.exchange(true)) {
                SendSignals();
            }
        });
    }
};

const Orders g_orders;

}  // namespace
}  // namespace Korvex3Sync::tests::recorder
