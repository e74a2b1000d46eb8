#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Korvex3Sync::tests {

/// A temporary folder, whose name has a letter outside ASCII. The destructor removes it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

void WriteText(const std::filesystem::path& file, const std::string& text);

/// An 8-bit grey image; `seed` makes it different from others.
struct TestImage {
    int width;
    int height;
    std::vector<std::uint8_t> pixels;
};
TestImage RandomImage(int width, int height, unsigned seed);

enum class PngKind { Grey8, Grey16, Rgb8 };
/// Writes a PNG file of the given kind; `pixels` are its bytes row by row. With a text, it has that
/// beside the image, compressed.
void WritePng(const std::filesystem::path& file, int width, int height, PngKind kind,
              const std::vector<std::uint8_t>& pixels, std::string text = "");
void WriteGrey(const std::filesystem::path& file, const TestImage& image,
               const std::string& text = "");

}  // namespace Korvex3Sync::tests
