#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// A drawing as an SVG document, in pixels from its upper left corner. Texts are escaped. One
/// thread.
class Svg {
public:
    enum class Anchor { Start, Middle, End };

    /// A tooltip may be empty.
    void Rect(double x, double y, double width, double height, const char* fill,
              std::string_view tooltip = "");
    void Line(double x1, double y1, double x2, double y2, const char* stroke);
    void Curve(const std::vector<std::pair<double, double>>& points, const char* stroke);
    void Text(double x, double y, std::string_view text, int size, Anchor anchor = Anchor::Start,
              const char* fill = "#222");
    /// The whole drawing on white.
    std::string Document(int width, int height) const;

private:
    std::ostringstream m_body;
};

}  // namespace Korvex3Sync::korvexctl
