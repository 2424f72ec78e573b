// quillo convert: one picture from a layout to another, to look at what a conversion does.
#include "tools/quillo/command.h"
#include "tools/quillo/pictures/errors.h"
#include "tools/quillo/pictures/layouts.h"
#include "tools/quillo/pictures/picture.h"
#include "tools/quillo/pictures/png_file.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>

namespace quillo {
namespace {

using namespace pictures;
using conversions::conversion;
using conversions::last_argument;

struct request
{
    std::filesystem::path in;
    std::filesystem::path out;
    std::string from;
    std::string to;
    std::string size;
    bool expand = false;
    bool compress = false;
    int value = 255;
    conversion_options options;
    bool list = false;
};

bytes read_file(std::filesystem::path const& path)
{
    std::ifstream file{path, std::ios::binary};
    bytes content{std::istreambuf_iterator<char>{file}, {}};
    if (!file || std::filesystem::is_directory(path))
        throw input_error{path.string() + ": cannot be read"};
    return content;
}

void write_file(std::filesystem::path const& path, bytes const& content)
{
    std::ofstream file{path, std::ios::binary};
    file.write(reinterpret_cast<char const*>(content.data()), static_cast<std::streamsize>(content.size()));
    if (!file.flush())
        throw std::runtime_error{path.string() + ": cannot be written"};
}

int option_for(conversion const& row, choice const& chosen, request const& wanted)
{
    if (wanted.expand && row.last != last_argument::expand)
        throw request_error{"--expand does nothing for " + std::string{row.name} +
                            "; it belongs to uyvy to y or ya_uv"};
    if (wanted.compress && row.last != last_argument::compress)
        throw request_error{"--compress does nothing for " + std::string{row.name} + "; it belongs to y to uyvy"};
    switch (row.last) {
    case last_argument::color_space:
        return chosen.matrix;
    case last_argument::expand:
        return wanted.expand;
    case last_argument::compress:
        return wanted.compress;
    case last_argument::value:
        return wanted.value;
    case last_argument::none:
    case last_argument::all_opaque:
        break;
    }
    return 0;
}

png_picture read_source(conversion const& row, request const& wanted)
{
    if (row.source() == "black")
        return {parse_size(wanted.size), {}};
    bytes file = read_file(wanted.in);
    if (is_png(wanted.in))
        return read_png(file, layout{wanted.from}.base);
    std::string const fitting = usual_sizes(row, side::read, file.size());
    if (wanted.size.empty())
        throw request_error{"a raw picture needs --size" + (fitting.empty() ? "" : ", perhaps " + fitting)};
    dimensions const size = parse_size(wanted.size);
    std::size_t const needed = file_size(row, side::read, size);
    if (file.size() != needed)
        throw input_error{wanted.in.string() + " has " + std::to_string(file.size()) + " bytes, " + wanted.from +
                          " of " + wanted.size + " has " + std::to_string(needed) +
                          (fitting.empty() ? "; no usual size has so many" : "; so many has " + fitting)};
    return {size, std::move(file)};
}

void run(request const& wanted)
{
    if (wanted.list) {
        std::cout << list_of_conversions() << "PNG files can hold " << png_layouts() << ".\n";
        return;
    }
    choice const chosen = choose(wanted.from, wanted.to);
    conversion_options options = wanted.options;
    options.option = option_for(*chosen.row, chosen, wanted);
    options.ask_opaque = chosen.row->last == last_argument::all_opaque;

    png_picture const source = read_source(*chosen.row, wanted);
    converted const result = convert(*chosen.row, source.file, source.size, options);
    std::string const target = layout{wanted.to}.base;
    write_file(wanted.out, is_png(wanted.out) ? write_png(result.file, source.size, target) : result.file);

    std::cout << chosen.row->name << ' ' << source.size.width << 'x' << source.size.height;
    if (options.ask_opaque)
        std::cout << (result.all_opaque ? ", counts as opaque" : ", does not count as opaque");
    std::cout << '\n';
}

int guarded_run(request const& wanted)
{
    try {
        run(wanted);
        return exit_ok;
    } catch (request_error const& error) {
        std::cerr << "quillo convert: " << error.what() << '\n';
        return exit_usage;
    } catch (input_error const& error) {
        std::cerr << "quillo convert: " << error.what() << '\n';
        return exit_input;
    }
}

} // namespace

void add_convert(CLI::App& app, int& exit_code)
{
    CLI::App& convert = *app.add_subcommand("convert", "Convert one picture from a layout to another");
    auto const wanted = std::make_shared<request>();
    CLI::Option* const list = convert.add_flag("--list", wanted->list, "Print every pair of layouts and stop");
    auto needed = [&](CLI::Option* option) { option->excludes(list); };
    needed(convert.add_option("IN", wanted->in, "Raw planes one after the other without gaps, or a .png"));
    needed(convert.add_option("OUT", wanted->out, "The same for the result"));
    needed(convert.add_option("--from", wanted->from, "Layout of IN, with _601 or _709 for the matrix"));
    needed(convert.add_option("--to", wanted->to, "Layout of OUT, with _601 or _709 for the matrix (709)"));
    convert.add_option("--size", wanted->size, "Size of a raw IN, such as 1920x1080");
    convert.add_flag("--expand", wanted->expand, "uyvy to y or ya_uv: widen studio-range luma");
    convert.add_flag("--compress", wanted->compress, "y to uyvy: narrow full-range luma");
    convert.add_option("--value", wanted->value, "black to alpha: what to fill with")->check(CLI::Range(0, 255));
    convert.add_flag("--tight", wanted->options.tight_strides, "Lines without gaps: they may join into one run");
    convert.add_flag("--bottom-up", wanted->options.bottom_up, "Take IN from its last line upwards");
    convert.add_flag("--reference", wanted->options.by_reference, "By the plain reference instead of the library");
    convert.footer(
        "Example: quillo convert photo.png photo.uyvy --from bgra --to uyvy_709\n"
        "Exit codes: 0 done, 1 OUT cannot be written, 2 no such layout, size or option, 3 IN cannot be read.");
    convert.callback([wanted, &exit_code] {
        if (!wanted->list && (wanted->out.empty() || wanted->from.empty() || wanted->to.empty()))
            throw CLI::RequiredError{"IN, OUT, --from and --to (or --list)"};
        exit_code = guarded_run(*wanted);
    });
}

} // namespace quillo
