// What the library takes for one image set, beside the exact-time synchronizer of ROS
// message_filters, in turns. The images are so small that the way of a set is measured, not the
// copying of pixels.

#include <message_filters/sync_policies/exact_time.h>
#include <message_filters/synchronizer.h>
#include <ros/message_traits.h>

#include <boost/bind/bind.hpp>
#include <boost/make_shared.hpp>
#include <thread>

#include "Report.h"
#include "SetMeter.h"
#include "platform/include/zr3DCamera.h"

namespace {

/// The least that a message can be: without the texts of ROS's own image message.
struct Image {
    using Ptr = boost::shared_ptr<Image>;
    ros::Time stamp;
    std::vector<unsigned char> pixels;
};

}  // namespace

template <>
struct ros::message_traits::TimeStamp<Image> {
    static ros::Time value(const Image& image) { return image.stamp; }
};

namespace {

using Policy = message_filters::sync_policies::ExactTime<Image, Image>;

constexpr int kSize = 16;
constexpr std::size_t kPixels = kSize * kSize;
constexpr std::uint64_t kWarmUp = 50'000;
constexpr std::uint64_t kSets = 500'000;
constexpr int kRounds = 15;
constexpr std::uint32_t kQueue = 10;

/// One half of a packed frame as a separate message.
Image::Ptr MakeImage(const unsigned char* pixels, const ros::Time& stamp) {
    auto image = boost::make_shared<Image>();
    image->stamp = stamp;
    image->pixels.assign(pixels, pixels + kPixels);
    return image;
}

/// A camera of the instant head, opened independently of the library.
class Camera {
public:
    Camera() {
        const char* const serial = "KV00I0001";
        if (zr3DCamera::CreateCamera(m_handle, serial) != 0 ||
            zr3DCamera::OpenCamera(m_handle, serial, kSize, kSize) != 0) {
            bench::Fail("the instant camera did not open");
        }
    }
    ~Camera() { zr3DCamera::ReleaseCamera(m_handle); }
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    const unsigned char* Snap() {
        unsigned char* frame = nullptr;
        if (zr3DCamera::SnapShot(m_handle, frame) != 0) {
            bench::Fail("the instant camera gave no frame");
        }
        return frame;
    }

private:
    void* m_handle = nullptr;
};

/// Where the two messages of a set come from.
enum class Messages {
    Made,   ///< made of a frame, as the library makes its images
    Reused  ///< the same two with a new stamp: nothing but the pairing
};

/// Nanoseconds that the synchronizer takes for one set, on a thread of its own as the library's
/// grab thread is.
double SynchronizerNanoseconds(Messages messages) {
    bench::SetMeter meter(kWarmUp, kSets);
    std::thread source([&meter, messages] {
        message_filters::Synchronizer<Policy> synchronizer{Policy(kQueue)};
        synchronizer.registerCallback(boost::bind(&bench::SetMeter::Count, &meter));
        Camera camera;
        Image::Ptr left = MakeImage(camera.Snap(), ros::Time());
        Image::Ptr right = MakeImage(camera.Snap(), ros::Time());
        for (std::uint64_t set = 1; set <= kWarmUp + kSets; ++set) {
            ros::Time stamp;
            stamp.fromNSec(set * 1'000'000);
            if (messages == Messages::Made) {
                const unsigned char* const frame = camera.Snap();
                left = MakeImage(frame, stamp);
                right = MakeImage(frame + kPixels, stamp);
            } else {
                left->stamp = stamp;
                right->stamp = stamp;
            }
            synchronizer.add<0>(left);
            synchronizer.add<1>(right);
        }
    });
    const double took = meter.Wait();
    source.join();
    return took;
}

}  // namespace

int main() {
    bench::SilenceLibrary();
    ros::Time::init();
    std::vector<double> library;
    std::vector<double> made;
    std::vector<double> reused;
    for (int round = 0; round < kRounds; ++round) {
        library.push_back(bench::NanosecondsPerSet(kSize, kSize, kWarmUp, kSets));
        made.push_back(SynchronizerNanoseconds(Messages::Made));
        reused.push_back(SynchronizerNanoseconds(Messages::Reused));
    }
    bench::PrintSpread("library, frame to callback", library, "ns");
    bench::PrintSpread("message_filters, messages made of a frame", made, "ns");
    bench::PrintSpread("message_filters, the same messages again", reused, "ns");
    bench::PrintSpread("library / message_filters, messages made", bench::Ratios(library, made),
                       "");
    bench::PrintSpread("library / message_filters, the same messages",
                       bench::Ratios(library, reused), "");
}
