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

void convert_input(FuzzedDataProvider& input)
{
    auto const& rows = quillo::conversions::all();
    std::string from = input.ConsumeRandomLengthString(12);
    std::string to = input.ConsumeRandomLengthString(12);
    if (input.ConsumeBool()) {
        conversion const& row = rows[input.ConsumeIntegralInRange<std::size_t>(0, rows.size() - 1)];
        from = row.source();
        to = row.target();
    }
    choice const chosen = choose(from, to);
    conversion_options options;
    options.option = chosen.matrix;
    options.ask_opaque = input.ConsumeBool();
    options.tight_strides = input.ConsumeBool();
    options.bottom_up = input.ConsumeBool();

    if (input.ConsumeBool()) {
        png_picture const picture = read_png(input.ConsumeRemainingBytes<unsigned char>(), layout{from}.base);
        if (picture.file.size() < 1 << 16)
            (void)convert(*chosen.row, picture.file, picture.size, options);
        return;
    }
    dimensions const size = parse_size(input.ConsumeRandomLengthString(12));
    std::size_t const needed = file_size(*chosen.row, side::read, size);
    if (needed + file_size(*chosen.row, side::written, size) > 1 << 18)
        return; // as good as a small one, and slow
    bytes file = input.ConsumeRemainingBytes<unsigned char>();
    if (input.ConsumeBool())
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
