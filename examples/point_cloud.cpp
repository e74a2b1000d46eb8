// Measures the built-in scene of the virtual head with its laser lines and saves the points as PLY,
// in millimetres and in the coordinates of the object.
//
//   point_cloud [FILE] [SETS]            (default: points.ply, 8 sets)
//
// The program finds the laser lines in the left image, row by row. A point of a line lies on the
// ray of its pixel and in the plane of that laser line. The right image shows which line it is:
// only for the correct plane, the point lies on a line there, too. The point itself is where the
// rays of the two sensors meet. The positions of sensors, laser lines and object are the defaults
// of the scene in docs/virtual-head.md; a real head needs its calibration instead.

#include <Korvex3Sync/Korvex3Sync.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <semaphore>
#include <string>
#include <vector>

#include "point_cloud/Triangulation.h"

using namespace Korvex3Sync;
using namespace point_cloud;

namespace {

bool Save(const std::string& file, const std::vector<Point>& points) {
    std::ofstream ply(file);
    ply << "ply\nformat ascii 1.0\ncomment millimetres; x right, y down, z away from the head\n"
        << "element vertex " << points.size()
        << "\nproperty float x\nproperty float y\nproperty float z\n"
        << "property uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n";
    for (const auto& [place, color] : points) {
        ply << place.x << ' ' << place.y << ' ' << place.z << ' ' << color[0] << ' ' << color[1]
            << ' ' << color[2] << '\n';
    }
    ply.close();
    return !ply.fail();
}

// Copies image sets until it has enough. The library calls OnSet on a camera's thread.
class Collector {
public:
    Collector(std::size_t sets, std::size_t pixels) : m_sets(sets) {
        for (Set& set : m_sets) {
            for (auto& image : set.images) {
                image.resize(pixels);
            }
        }
    }

    static void OnSet(const void* const& context, std::vector<unsigned char*>& images,
                      const int& width, const int& height, std::vector<int>&) {
        auto* const self = static_cast<Collector*>(const_cast<void*>(context));
        const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        if (self->m_taken == self->m_sets.size() || images.size() != 3 ||
            pixels != self->m_sets.front().images.front().size()) {
            return;
        }
        Set& set = self->m_sets[self->m_taken++];
        set.width = width;
        set.height = height;
        for (std::size_t i = 0; i < images.size(); ++i) {
            std::copy_n(images[i], pixels, set.images[i].begin());
        }
        // The head writes the trigger number, modulo 256, to this pixel of the right image.
        set.key = images[1][3];
        self->m_arrived.release();
    }

    bool WaitForSet() { return m_arrived.try_acquire_for(std::chrono::seconds(5)); }
    const std::vector<Set>& Sets() const { return m_sets; }

private:
    std::vector<Set> m_sets;
    std::size_t m_taken = 0;
    std::counting_semaphore<> m_arrived{0};
};

// True if all sets arrived.
bool Scan(void* const& head, Collector& collector) {
    // Light for the colour frames only: in the mono frames the background of the lines is black.
    SetStrobeControlledByTrigger(head, CONTROL_ROUTE_2, STROBE_STATE_1);
    SetStrobeDutioRatio(head, 100, 0, 0);
    EnableBlueLaser(head, LASER_WORK_MODE_1, true);
    SetScanCallBackFunction(head, Collector::OnSet, &collector);
    EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, true);
    bool came = true;
    for (std::size_t i = 0; came && i < collector.Sets().size(); ++i) {
        came = collector.WaitForSet();
    }
    EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, false);
    SetScanCallBackFunction(head, nullptr, nullptr);
    EnableBlueLaser(head, LASER_WORK_MODE_1, false);
    return came;
}

int Run(const std::string& file, int sets) {
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> color;
    int cameras = 0;
    void* head = nullptr;
    GetCamerasInformation("KV00", serials, widths, heights, color, cameras);
    const bool connected =
        ConnectDevice("KV00", "", serials, widths, heights, head) == STATUS_SUCCESS;
    for (char* serial : serials) {
        delete[] serial;
    }
    if (!connected) {
        std::cerr << "no head; KORVEX_VIRTUAL_HEAD=default gives a simulated one\n";
        return 1;
    }
    const int width = widths.front();
    const int height = heights.front();
    Collector collector(static_cast<std::size_t>(sets),
                        static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const bool came = Scan(head, collector);
    DisConnectDevice(head);
    if (!came) {
        std::cerr << "the head gave too few image sets with colour\n";
        return 1;
    }
    std::vector<Point> points;
    const Triangulation triangulation(width, height);
    for (const Set& set : collector.Sets()) {
        triangulation.Add(set, points);
    }
    if (!Save(file, points)) {
        std::cerr << "cannot write " << file << '\n';
        return 1;
    }
    std::cout << points.size() << " points of " << sets << " image sets in " << file << '\n';
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    constexpr int kMostSets = 100;  // each takes 4 MB
    const std::string file = count > 1 ? arguments[1] : "points.ply";
    const int sets = count > 2 ? std::atoi(arguments[2]) : 8;
    if (count > 3 || sets < 1 || sets > kMostSets) {
        std::cerr << "usage: point_cloud [FILE] [SETS]     SETS: 1 to " << kMostSets << '\n';
        return 2;
    }
    return Run(file, sets);
}
