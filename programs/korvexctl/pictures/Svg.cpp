#include "korvexctl/pictures/Svg.h"

#include <cmath>

namespace Korvex3Sync::korvexctl {

namespace {

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            default:
                // A document holds no control characters.
                escaped += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
        }
    }
    return escaped;
}

/// A tenth of a pixel is enough.
double Rounded(double pixels) {
    constexpr double kSteps = 10;
    return std::round(pixels * kSteps) / kSteps;
}

}  // namespace

void Svg::Rect(double x, double y, double width, double height, const char* fill,
               std::string_view tooltip) {
    m_body << "<rect x=\"" << Rounded(x) << "\" y=\"" << Rounded(y) << "\" width=\""
           << Rounded(width) << "\" height=\"" << Rounded(height) << "\" fill=\"" << fill << "\">";
    if (!tooltip.empty()) {
        m_body << "<title>" << Escaped(tooltip) << "</title>";
    }
    m_body << "</rect>\n";
}

void Svg::Line(double x1, double y1, double x2, double y2, const char* stroke) {
    m_body << "<line x1=\"" << Rounded(x1) << "\" y1=\"" << Rounded(y1) << "\" x2=\"" << Rounded(x2)
           << "\" y2=\"" << Rounded(y2) << "\" stroke=\"" << stroke << "\"/>\n";
}

void Svg::Curve(const std::vector<std::pair<double, double>>& points, const char* stroke) {
    m_body << "<polyline fill=\"none\" stroke=\"" << stroke << "\" stroke-width=\"1.5\" points=\"";
    for (const auto& [x, y] : points) {
        m_body << Rounded(x) << ',' << Rounded(y) << ' ';
    }
    m_body << "\"/>\n";
}

void Svg::Text(double x, double y, std::string_view text, int size, Anchor anchor,
               const char* fill) {
    const char* const where = anchor == Anchor::Start    ? "start"
                              : anchor == Anchor::Middle ? "middle"
                                                         : "end";
    m_body << "<text x=\"" << Rounded(x) << "\" y=\"" << Rounded(y) << "\" font-size=\"" << size
           << "\" text-anchor=\"" << where << "\" fill=\"" << fill << "\">" << Escaped(text)
           << "</text>\n";
}

std::string Svg::Document(int width, int height) const {
    std::ostringstream document;
    document << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\""
             << height << "\" viewBox=\"0 0 " << width << ' ' << height
             << "\" font-family=\"sans-serif\">\n<rect width=\"100%\" height=\"100%\" "
                "fill=\"#fff\"/>\n"
             << m_body.str() << "</svg>\n";
    return document.str();
}

}  // namespace Korvex3Sync::korvexctl
