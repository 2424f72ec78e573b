// What `quillo convert` does with any layout names, sizes and files.
#include "tools/quillo/pictures/errors.h"
#include "tools/quillo/pictures/layouts.h"
#include "tools/quillo/pictures/picture.h"
#include "tools/quillo/pictures/png_file.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <string_view>

namespace {

using namespace quillo::pictures;
using quillo::conversions::conversion;

constexpr std::size_t most_bytes = 1 << 14;

// Most names and sizes are ones that there are, so that most inputs are converted.
bool is_odd_one(FuzzedDataProvider& input) { return input.ConsumeIntegralInRange<int>(0, 15) == 15; }

std::string draw_size(FuzzedDataProvider& input)
{
    if (is_odd_one(input))
        return input.ConsumeRandomLengthString(12);
    // Some vectors wide and a few lines high, or of any shape.
    bool const any = is_odd_one(input);
    int const width = input.ConsumeIntegralInRange<int>(0, any ? longest_side + 1 : 140);
    int const height = input.ConsumeIntegralInRange<int>(0, any ? longest_side + 1 : 12);
    return std::to_string(width) + 'x' + std::to_string(height);
}

void convert_input(FuzzedDataProvider& input)
{
    auto const& rows = quillo::conversions::all();
    conversion const& row = rows[input.ConsumeIntegralInRange<std::size_t>(0, rows.size() - 1)];
    std::string const from{is_odd_one(input) ? input.ConsumeRandomLengthString(12) : std::string{row.source()}};
    std::string const to{is_odd_one(input) ? input.ConsumeRandomLengthString(12) : std::string{row.target()}};
    choice const chosen = choose(from, to);
    conversion_options options;
    options.option = chosen.matrix;
    options.ask_opaque = input.ConsumeBool();
    options.tight_strides = input.ConsumeBool();
    options.bottom_up = input.ConsumeBool();

    if (input.ConsumeIntegralInRange<int>(0, 3) == 3) {
        png_picture const picture = read_png(input.ConsumeRemainingBytes<unsigned char>(), layout{from}.base);
        if (picture.file.size() <= most_bytes)
            (void)convert(*chosen.row, picture.file, picture.size, options);
        return;
    }
    dimensions const size = parse_size(draw_size(input));
    std::size_t const needed = file_size(*chosen.row, side::read, size);
    if (needed + file_size(*chosen.row, side::written, size) > most_bytes)
        return; // as good as a small one, and slow
    bool const has_its_length = !is_odd_one(input);
    bytes file = input.ConsumeRemainingBytes<unsigned char>();
    if (has_its_length)
        file.resize(needed);
    converted const result = convert(*chosen.row, file, size, options);
    (void)write_png(result.file, size, layout{to}.base);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input{data, size};
    try {
        convert_input(input);
    } catch (request_error const&) {
    } catch (input_error const&) {
    }
    return 0;
}
