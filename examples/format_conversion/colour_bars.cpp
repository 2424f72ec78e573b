// Colour bars in BGRA become UYVY and a plane of alpha, written to a file:
//   ./colour_bars bars.uyvy && ffplay -f rawvideo -pixel_format uyvy422 -video_size 1280x720 bars.uyvy
#include <lib/format_conversion/format_conversion.h>

#include <cstdio>
#include <vector>

int main(int argc, char** argv)
{
    namespace convert = Processing::FXlib::format_conversion;
    int const width = 1280, height = 720;

    std::vector<unsigned char> bgra(width * 4 * height);
    for (int i = 0; i < width * height; ++i) {
        int const bar = 7 - i % width * 8 / width; // white, yellow, ..., black
        int const pixel[] = {bar & 1 ? 255 : 0, bar & 4 ? 255 : 0, bar & 2 ? 255 : 0, 255};
        for (int component = 0; component < 4; ++component)
            bgra[i * 4 + component] = static_cast<unsigned char>(pixel[component]);
    }

    std::vector<unsigned char> uyvy(width * 2 * height), alpha(width * height);
    bool opaque = false;
    convert::bgra::uyvy_a(bgra.data(), width * 4, uyvy.data(), width * 2, alpha.data(), width, width, height, &opaque);

    std::printf("white %d %d %d %d, %s\n", uyvy[0], uyvy[1], uyvy[2], uyvy[3], opaque ? "opaque" : "with alpha");
    std::FILE* const file = argc > 1 ? std::fopen(argv[1], "wb") : nullptr;
    return file && std::fwrite(uyvy.data(), 1, uyvy.size(), file) == uyvy.size() && std::fclose(file) == 0 ? 0 : 1;
}
