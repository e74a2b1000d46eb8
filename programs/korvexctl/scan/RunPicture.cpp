#include "korvexctl/scan/RunPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <iomanip>
#include <sstream>
#include <utility>

#include "korvexctl/pictures/Svg.h"
#include "korvexctl/pictures/TextLines.h"

namespace Korvex3Sync::korvexctl {

namespace {

using Anchor = Svg::Anchor;

constexpr int kWidth = 900;
constexpr int kLineStep = 18;
constexpr int kText = 12;
constexpr int kTitle = 14;
constexpr std::size_t kLettersAcross = 125;
constexpr double kLeft = 76;
constexpr double kRight = kWidth - 24;
constexpr double kPlotHeight = 130;
constexpr const char* kGrid = "#ddd";
constexpr const char* kAxis = "#888";
constexpr const char* kBlue = "#2a6fb0";
constexpr const char* kBand = "#b8d3ea";
constexpr std::array kPlaceColors{"#d1495b", "#edae49", "#00798c", "#7b4fa3", "#8f6a3d",
                                  "#3f8f4f", "#e07b39", "#5b6770", "#c2549a", "#1f4e79",
                                  "#9aa33a", "#444444", "#b03a2e", "#2e86c1"};

std::string NumberText(double number) {
    constexpr int kDigits = 6;
    std::ostringstream text;
    text << std::setprecision(kDigits) << number;
    return text.str();
}

/// The next number with one of these leading digits.
double NiceCeiling(double number,
                   std::initializer_list<double> leading = {1, 1.5, 2, 3, 4, 5, 6, 8}) {
    const double power = std::pow(10, std::floor(std::log10(number)));
    for (const double step : leading) {
        if (number <= step * power) {
            return step * power;
        }
    }
    return 10 * power;
}

/// Draws the panels of a run, one below the other.
class RunDrawing {
public:
    RunDrawing(const RunHistory& history, const std::vector<std::string>& header)
        : m_history(history),
          m_seconds(std::max<double>(1, static_cast<double>(history.Bins().size())) *
                    history.BinSeconds()) {
        m_y = kLineStep;
        for (const std::string& line : BreakLines(header, kLettersAcross)) {
            m_svg.Text(kLeft, m_y, line, kText);
            m_y += kLineStep;
        }
    }

    std::string Draw() {
        DrawLosses();
        DrawIntervals();
        DrawCallbacks();
        return m_svg.Document(kWidth, static_cast<int>(m_y));
    }

private:
    double Bottom() const { return m_top + kPlotHeight; }

    void BeginPanel(const char* title) {
        m_y += kLineStep;
        m_svg.Text(kLeft, m_y, title, kTitle);
        m_top = m_y + kLineStep / 2.0;
        m_y = Bottom() + kLineStep;
        m_svg.Line(kLeft, Bottom(), kRight, Bottom(), kAxis);
    }

    double TimeX(double seconds) const { return kLeft + (kRight - kLeft) * seconds / m_seconds; }
    double BinX(std::size_t bin) const {
        return TimeX(static_cast<double>(bin) * m_history.BinSeconds());
    }

    void DrawTimeAxis() {
        constexpr double kMostSteps = 10;
        const double step = NiceCeiling(m_seconds / kMostSteps, {1, 2, 5});
        for (int i = 0; i * step <= m_seconds; ++i) {
            const double time = i * step;
            m_svg.Line(TimeX(time), Bottom(), TimeX(time), Bottom() + 4, kAxis);
            m_svg.Text(TimeX(time), m_y, NumberText(time) + " s", kText, Anchor::Middle);
        }
        m_y += kLineStep;
    }

    void DrawMark(double y, const std::string& label) {
        m_svg.Line(kLeft, y, kRight, y, kGrid);
        m_svg.Text(kLeft - 6, y + 4, label, kText, Anchor::End);
    }

    void DrawLosses() {
        BeginPanel("Lost, by place");
        std::uint64_t most = 0;
        for (const RunHistory::Bin& bin : m_history.Bins()) {
            std::uint64_t sum = 0;
            for (const std::uint64_t count : bin.lost) {
                sum += count;
            }
            most = std::max(most, sum);
        }
        if (most == 0) {
            m_svg.Text((kLeft + kRight) / 2, m_top + kPlotHeight / 2, "nothing lost", kTitle,
                       Anchor::Middle, kAxis);
            DrawTimeAxis();
            return;
        }
        const double top = NiceCeiling(static_cast<double>(most));
        DrawMark(m_top, NumberText(top));
        DrawMark(Bottom(), "0");
        for (std::size_t i = 0; i < m_history.Bins().size(); ++i) {
            DrawBinLosses(i, top);
        }
        DrawTimeAxis();
        DrawLegend();
    }

    void DrawBinLosses(std::size_t index, double top) {
        const RunHistory::Bin& bin = m_history.Bins()[index];
        double y = Bottom();
        for (std::size_t place = 0; place < bin.lost.size(); ++place) {
            if (bin.lost[place] == 0) {
                continue;
            }
            constexpr double kLowest = 2;
            const double height =
                std::max(kPlotHeight * static_cast<double>(bin.lost[place]) / top, kLowest);
            y -= height;
            const double width = std::max(BinX(index + 1) - BinX(index), 2.0);
            m_svg.Rect(BinX(index), y, width, height, ColorOf(place),
                       std::to_string(bin.lost[place]) + " " + m_history.Places()[place].words +
                           " at " +
                           NumberText(static_cast<double>(index) * m_history.BinSeconds()) + " s");
        }
    }

    static const char* ColorOf(std::size_t place) {
        return kPlaceColors[place % kPlaceColors.size()];
    }

    void DrawLegend() {
        for (std::size_t place = 0; place < m_history.Places().size(); ++place) {
            const RunHistory::Place& known = m_history.Places()[place];
            if (known.total > 0) {
                m_svg.Rect(kLeft, m_y - 10, 10, 10, ColorOf(place));
                m_svg.Text(kLeft + 16, m_y, std::to_string(known.total) + " " + known.words, kText);
                m_y += kLineStep;
            }
        }
    }

    void DrawIntervals() {
        BeginPanel("Time from set to set: mean, and from shortest to longest");
        double longest = 0;
        double sum = 0;
        int count = 0;
        for (const RunHistory::Bin& bin : m_history.Bins()) {
            longest = std::max(longest, bin.longestMs);
            sum += bin.sumMs;
            count += bin.intervals;
        }
        if (count == 0 || longest <= 0) {
            DrawTimeAxis();
            return;
        }
        // One long gap would flatten everything else.
        constexpr double kFarAbove = 5;
        constexpr double kShortest = 1;
        if (longest > std::max(kFarAbove * sum / count, kShortest)) {
            DrawIntervalScale(kShortest, NiceCeiling(longest));
        } else {
            DrawIntervalScale(0, NiceCeiling(longest));
        }
        DrawTimeAxis();
    }

    /// From `low`, 0 for a linear scale, to `high` milliseconds.
    void DrawIntervalScale(double low, double high) {
        const auto yOf = [&](double ms) {
            const double share =
                low > 0 ? std::log(std::max(ms, low) / low) / std::log(high / low) : ms / high;
            return Bottom() - kPlotHeight * share;
        };
        if (low > 0) {
            for (int decade = 0; low * std::pow(10, decade) <= high; ++decade) {
                const double mark = low * std::pow(10, decade);
                DrawMark(yOf(mark), NumberText(mark) + " ms");
            }
        } else {
            for (const double mark : {0.0, high / 2, high}) {
                DrawMark(yOf(mark), NumberText(mark) + " ms");
            }
        }
        std::vector<std::pair<double, double>> means;
        for (std::size_t i = 0; i < m_history.Bins().size(); ++i) {
            const RunHistory::Bin& bin = m_history.Bins()[i];
            if (bin.intervals > 0) {
                const double width = std::max(BinX(i + 1) - BinX(i), 1.0);
                m_svg.Rect(BinX(i), yOf(bin.longestMs), width,
                           std::max(yOf(bin.shortestMs) - yOf(bin.longestMs), 1.0), kBand);
                means.emplace_back(BinX(i) + width / 2, yOf(bin.sumMs / bin.intervals));
            } else if (!means.empty()) {
                m_svg.Curve(std::exchange(means, {}), kBlue);
            }
        }
        m_svg.Curve(means, kBlue);
    }

    void DrawCallbacks() {
        BeginPanel("Sets by the time in the scan callback");
        const auto& classes = m_history.CallbackClasses();
        const auto most = *std::max_element(classes.begin(), classes.end());
        if (most > 0) {
            const double top = NiceCeiling(static_cast<double>(most));
            DrawMark(m_top, NumberText(top));
            DrawMark(Bottom(), "0");
            for (std::size_t i = 0; i < classes.size(); ++i) {
                const double height = kPlotHeight * static_cast<double>(classes[i]) / top;
                if (classes[i] > 0) {
                    m_svg.Rect(ClassX(static_cast<double>(i)) + 1, Bottom() - std::max(height, 1.0),
                               ClassX(1) - ClassX(0) - 2, std::max(height, 1.0), kBlue,
                               std::to_string(classes[i]) + " sets");
                }
            }
        }
        constexpr std::array kMarks{"1 us", "10 us", "100 us", "1 ms", "10 ms", "100 ms", "1 s"};
        double microseconds = 1;
        for (const char* mark : kMarks) {
            const double x = ClassX(2 * std::log2(microseconds));
            m_svg.Line(x, Bottom(), x, Bottom() + 4, kAxis);
            m_svg.Text(x, m_y, mark, kText, Anchor::Middle);
            microseconds *= 10;
        }
        m_y += kLineStep;
    }

    static double ClassX(double index) {
        return kLeft + (kRight - kLeft) * index / static_cast<double>(RunHistory::kClasses);
    }

    const RunHistory& m_history;
    const double m_seconds;
    Svg m_svg;
    double m_y = 0;    // where the next thing is drawn
    double m_top = 0;  // of the plot
};

}  // namespace

std::string DrawRun(const RunHistory& history, const std::vector<std::string>& header) {
    return RunDrawing(history, header).Draw();
}

}  // namespace Korvex3Sync::korvexctl
