// Takes two colour images outside a scan.

#include <exception>
#include <iostream>

#include "Head.h"

using namespace guide;

namespace {

using Image = std::unique_ptr<unsigned char[]>;

/// Two colour mosaics; the second may be null.
std::vector<Image> Snap(void* const& head) {
    std::vector<unsigned char*> images;
    int reportedWidth = 0;   // always 1280; SizeOfImages gets the real size
    int reportedHeight = 0;  // always 1024
    double exposure = 5.0;   // milliseconds, for the second image
    int gain = 2;            // likewise
    const RETSTATUS status = SnapColorImage(head, images, reportedWidth, reportedHeight, 0,
                                            exposure, gain, CONTROL_ROUTE_2);
    // We own the images now, each an array from new[].
    std::vector<Image> owned(images.begin(), images.end());
    // After a snapshot the trigger is in the mode of the snapshot.
    Require(EnableVideoTrigger(head, TRIGGER_SINGLE_COLOR, false), "stop the trigger");
    Require(status, "take a colour image");
    return owned;
}

/// The real size of each image, in bytes.
std::size_t SizeOfImages(void* const& head) {
    int width = 0;
    int height = 0;
    Require(GetCameraResolution(head, 0, width, height), "read the image size");
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

}  // namespace

int main() {
    try {
        const Cameras cameras("KV00");
        const Head head(cameras);
        const std::vector<Image> images = Snap(head.Handle());
        const std::size_t size = SizeOfImages(head.Handle());
        for (const Image& image : images) {
            std::cout << (image ? "an image of " + std::to_string(size) + " bytes\n" : "none\n");
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
