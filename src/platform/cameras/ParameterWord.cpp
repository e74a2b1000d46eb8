#include "platform/cameras/ParameterWord.h"

namespace Korvex3Sync::cameras {
namespace {

constexpr int kWidestWord = 0xFFFF;
constexpr unsigned kOrders = 4;
constexpr unsigned kExposureBits = 0xFFU;
constexpr unsigned kOrderShift = 8;
constexpr unsigned kGainShift = 10;
constexpr long kMicrosecondsPerTenth = 100;

}  // namespace

std::optional<ParameterWord> DecodeParameterWord(int word) {
    if (word < 0 || word > kWidestWord) {
        return std::nullopt;
    }
    const auto bits = static_cast<unsigned>(word);
    if (bits < kOrders) {
        return ParameterWord{word};
    }
    ParameterWord decoded{static_cast<int>(bits >> kOrderShift & (kOrders - 1))};
    const unsigned tenths = bits & kExposureBits;
    if (tenths != 0) {
        decoded.setting = {static_cast<long>(tenths) * kMicrosecondsPerTenth,
                           static_cast<int>(bits >> kGainShift)};
    }
    return decoded;
}

}  // namespace Korvex3Sync::cameras
