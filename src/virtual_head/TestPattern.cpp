#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <utility>
#include <vector>

#include "virtual_head/ImageSource.h"
#include "virtual_head/PackedFrame.h"

namespace Korvex3Sync::virtual_head {
namespace {

using Pixels = std::vector<std::uint8_t>;

constexpr int kFrames = 8;  // the pattern moves on by an eighth of its period from frame to frame

std::uint8_t ToByte(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

/// 0 at both ends of [0, count), 1 in the middle.
double Arch(int position, int count) {
    return std::sin(std::numbers::pi * (position + 0.5) / count);
}

/// A curved surface, softly lit, under a set of bright lines.
class LineImage {
public:
    LineImage(int width, int height) : m_height(height), m_spacing(std::max(16, width / 10)) {
        for (int x = 0; x < width; ++x) {
            m_shadeX.push_back(static_cast<unsigned>(256 * Arch(x, width)));
        }
        for (int y = 0; y < height; ++y) {
            m_shadeY.push_back(static_cast<unsigned>(256 * Arch(y, height)));
        }
        const double half = std::max(0.8, width / 800.0);
        for (int step = 0; step < m_spacing * kSteps; ++step) {
            const double distance = (step - m_spacing * kSteps / 2.0) / kSteps;
            m_profile.push_back(ToByte(185 * std::exp(-distance * distance / (2 * half * half))));
        }
    }

    void Draw(int frame, int sensor, Pixels& pixels) const {
        auto pixel = pixels.begin();
        const int period = m_spacing * kSteps;
        for (int y = 0; y < m_height; ++y) {
            int step = Offset(frame, sensor, y);
            const unsigned shade = m_shadeY[static_cast<std::size_t>(y)];
            for (const unsigned shadeX : m_shadeX) {
                const unsigned grey =
                    14 + (shade * shadeX * 70 >> 16U) + m_profile[static_cast<std::size_t>(step)];
                *pixel++ = static_cast<std::uint8_t>(std::min(grey, 255U));
                step += kSteps;
                step -= step >= period ? period : 0;
            }
        }
    }

private:
    static constexpr int kSteps = 4;  // of the profile, in each pixel

    /// Where in the profile a row begins. The sensors look from two sides: what stands nearer, in
    /// the middle, is displaced further.
    int Offset(int frame, int sensor, int y) const {
        const int period = m_spacing * kSteps;
        const double bulge = Arch(y, m_height) * (sensor == 0 ? -0.9 : 0.6);
        const double side = sensor == 0 ? 0.0 : 0.3;
        const double periods = static_cast<double>(frame) / kFrames + bulge + side + 2;
        return static_cast<int>(periods * period) % period;
    }

    const int m_height;
    const int m_spacing;
    std::vector<unsigned> m_shadeX;
    std::vector<unsigned> m_shadeY;
    std::vector<std::uint8_t> m_profile;
};

/// An RGGB mosaic of bands of colour that wander.
void DrawMosaic(int width, int height, int frame, Pixels& pixels) {
    std::array<std::uint8_t, 256> wave{};
    for (std::size_t i = 0; i < wave.size(); ++i) {
        wave[i] = ToByte(135 + 105 * std::sin(2 * std::numbers::pi * static_cast<double>(i) / 256));
    }
    const int moved = frame * 256 / kFrames;
    auto pixel = pixels.begin();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int place = 0;
            if (y % 2 == 0 && x % 2 == 0) {  // red
                place = x * 256 / width + moved;
            } else if (y % 2 == 1 && x % 2 == 1) {  // blue
                place = (x + y) * 384 / (width + height) + 170 - moved;
            } else {
                place = y * 256 / height + 85 + moved;
            }
            *pixel++ = wave[static_cast<std::size_t>(place) & 0xFFU];
        }
    }
}

class TestPattern : public ImageSource {
public:
    explicit TestPattern(const HeadDescription& description) {
        const int width = description.width;
        const int height = description.height;
        const std::size_t pixels =
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        const LineImage lines(width, height);
        Pixels first(pixels);
        Pixels second(pixels);
        for (int frame = 0; frame < kFrames; ++frame) {
            lines.Draw(frame, 0, first);
            lines.Draw(frame, 1, second);
            Pixels& mono = m_mono[static_cast<std::size_t>(frame)];
            mono.resize(2 * pixels);
            PackMono(first.data(), second.data(), pixels, mono.data());
            if (description.color) {
                DrawMosaic(width, height, frame, first);
                Pixels& color = m_color[static_cast<std::size_t>(frame)];
                color.resize(2 * pixels);
                PackColor(first.data(), pixels, color.data());
            }
        }
    }

    void WritePacked(const Exposure& exposure, std::uint8_t* packed) const override {
        const Pixels& frame = (exposure.color ? m_color : m_mono)[exposure.trigger % kFrames];
        std::memcpy(packed, frame.data(), frame.size());
        WriteKey(exposure.key, packed);
    }

private:
    std::array<Pixels, kFrames> m_mono;
    std::array<Pixels, kFrames> m_color;  // empty without colour
};

}  // namespace

std::shared_ptr<ImageSource> MakeTestPattern(const HeadDescription& description) {
    return std::make_shared<TestPattern>(description);
}

}  // namespace Korvex3Sync::virtual_head
