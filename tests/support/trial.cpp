#include "tests/support/trial.h"

#include "lib/format_conversion/detail/processor.h"
#include "tests/support/crash_report.h"
#include "tests/support/difference.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace quillo::conversions {
namespace {

namespace processors = Processing::FXlib::format_conversion::detail;

constexpr std::ptrdiff_t guard = 256;

// Bytes that may be touched in one plane, relative to its data pointer.
struct extent
{
    std::ptrdiff_t low = 0;
    std::ptrdiff_t high = 0;
};

call call_of(trial const& t)
{
    call c;
    for (std::size_t i = 0; i < t.row->planes.size(); ++i)
        c.planes[i].stride = t.strides[i];
    c.width = t.width;
    c.height = t.height;
    c.option = t.option;
    return c;
}

// Pixels of the whole picture as one run: a 32-bit product.
int joined_count(trial const& t)
{
    return static_cast<int>(static_cast<unsigned>(t.width) * static_cast<unsigned>(t.height));
}

extent extent_of(trial const& t, std::size_t plane)
{
    plane_shape const& shape = t.row->planes[plane];
    if (is_joined(*t.row, call_of(t)))
        return {0, t.height < 1 ? 0 : shape.reach(joined_count(t))};
    long const reach = shape.reach(t.width);
    int const lines = shape.lines(t.height);
    if (lines == 0 || reach == 0)
        return {};
    std::ptrdiff_t const last = std::ptrdiff_t{t.strides[plane]} * (lines - 1);
    return {std::min<std::ptrdiff_t>(last, 0), std::max<std::ptrdiff_t>(last, 0) + reach};
}

bool must_align(trial const& t, std::size_t plane)
{
    return t.height == 1 && (t.row->planes[plane].written ? t.row->outputs_aligned : t.row->sources_aligned);
}

// How the library is told to convert: by which variant, from how many bytes on past the caches, whether copies and
// fills are made by string instructions, and whether lines go in the order of a source that is stored bottom-up.
struct run_as
{
    processors::processor variant;
    long long streaming_from;
    bool strings;
    bool source_order;
};

// Every variant, with and without string instructions and in either order in turn, and each once more past the caches.
std::vector<run_as> every_way(random_numbers& random)
{
    std::vector<run_as> ways;
    for (processors::processor const variant : processors::variants())
        for (long long const from : {processors::streaming_bytes, 0ll})
            ways.push_back({variant, from, random.flip(), random.flip()});
    return ways;
}

} // namespace

std::string describe(trial const& t)
{
    std::ostringstream text;
    text << t.row->name << ' ' << t.width << " x " << t.height << ", strides";
    for (std::size_t i = 0; i < t.row->planes.size(); ++i)
        text << ' ' << t.strides[i];
    text << ", offsets";
    for (std::size_t i = 0; i < t.row->planes.size(); ++i)
        switch (t.places[i]) {
        case placing::between_guards:
            text << ' ' << t.offsets[i];
            break;
        case placing::before_unreadable:
            text << " end";
            break;
        case placing::after_unreadable:
            text << " start";
            break;
        }
    text << ", " << name(t.content);
    if (t.row->last == last_argument::all_opaque)
        text << (t.ask_opaque ? ", all_opaque asked" : ", all_opaque null");
    else if (t.row->last != last_argument::none)
        text << ", option " << t.option;
    return text.str();
}

trial_bench::trial_bench(std::size_t bytes_per_plane)
{
    for (auto* arenas : {&given_, &expected_, &before_})
        for (auto& a : *arenas)
            a = std::make_unique<arena>(bytes_per_plane);
}

trial_bench::laid_out trial_bench::lay_out(trial const& t, std::size_t plane, arena const& in) const
{
    extent const touched = extent_of(t, plane);
    unsigned char* data = nullptr;
    switch (t.places[plane]) {
    case placing::between_guards: {
        std::ptrdiff_t const room = guard - touched.low;
        data = in.begin() + (room + 63) / 64 * 64 + t.offsets[plane];
        break;
    }
    case placing::before_unreadable:
        data = in.end() - touched.high;
        if (must_align(t, plane))
            data -= reinterpret_cast<std::uintptr_t>(data) % 16;
        break;
    case placing::after_unreadable:
        data = in.begin() - touched.low;
        break;
    }
    laid_out result;
    result.data = data;
    result.from = std::max(in.begin(), data + touched.low - guard);
    result.bytes = static_cast<std::size_t>(std::min(in.end(), data + touched.high + guard) - result.from);
    return result;
}

void trial_bench::fill_source(trial const& t, std::size_t plane, random_numbers& random)
{
    laid_out const to = lay_out(t, plane, *given_[plane]);
    fill(to.from, to.bytes, contents::noise, random);
    extent const touched = extent_of(t, plane);
    fill(to.data + touched.low, static_cast<std::size_t>(touched.high - touched.low), t.content, random);

    if (t.row->planes[plane].bytes_per_pixel == 4 && is_opaque_kind(t.content))
        set_alphas(t, plane, to.data, random);
}

void trial_bench::set_alphas(trial const& t, std::size_t plane, unsigned char* data, random_numbers& random)
{
    bool const joined = is_joined(*t.row, call_of(t));
    int const pixels = static_cast<int>(t.row->planes[plane].reach(joined ? joined_count(t) : t.width) / 4);
    int const lines = t.height < 1 ? 0 : joined ? 1 : t.height;
    if (pixels < 1 || lines < 1)
        return;
    auto alpha_at = [&](int line, int pixel) -> unsigned char& {
        return data[std::ptrdiff_t{t.strides[plane]} * line + 4 * pixel + 3];
    };
    for (int line = 0; line < lines; ++line)
        for (int pixel = 0; pixel < pixels; ++pixel)
            if (t.content != contents::half_opaque || pixel % 8 < 4)
                alpha_at(line, pixel) = 255;
            else
                alpha_at(line, pixel) = static_cast<unsigned char>(random.below(255));
    if (t.content == contents::almost_opaque)
        alpha_at(random.below(lines), random.below(pixels)) =
            static_cast<unsigned char>(random.flip() ? 254 : random.below(255));
}

std::string trial_bench::compare(trial const& t, std::size_t plane) const
{
    laid_out const got = lay_out(t, plane, *given_[plane]);
    laid_out const expected = lay_out(t, plane, *expected_[plane]);
    if (std::memcmp(got.from, expected.from, got.bytes) == 0)
        return {};
    return first_difference(expected.from, got.from, got.bytes, got.data - got.from, t.strides[plane],
                            t.row->planes[plane].bytes_per_pixel);
}

std::string trial_bench::run(trial const& t, random_numbers& random)
{
    crash_report const note{[&t] { return describe(t); }};
    std::size_t const planes = t.row->planes.size();
    call ours = call_of(t);
    call theirs = ours;
    for (std::size_t i = 0; i < planes; ++i) {
        laid_out const given = lay_out(t, i, *given_[i]);
        laid_out const expected = lay_out(t, i, *expected_[i]);
        if (t.row->planes[i].written)
            fill(given.from, given.bytes, contents::noise, random);
        else
            fill_source(t, i, random);
        std::memcpy(expected.from, given.from, given.bytes);
        std::memcpy(lay_out(t, i, *before_[i]).from, given.from, given.bytes);
        theirs.planes[i].data = given.data;
        ours.planes[i].data = expected.data;
    }
    bool const reports = t.row->returns_opaque || (t.row->last == last_argument::all_opaque && t.ask_opaque);
    bool const opaque_before = random.flip();
    bool expected_opaque = opaque_before;
    ours.all_opaque = reports ? &expected_opaque : nullptr;
    t.row->reference(ours);

    for (run_as const& as : every_way(random)) {
        for (std::size_t i = 0; i < planes; ++i)
            if (t.row->planes[i].written) {
                laid_out const given = lay_out(t, i, *given_[i]);
                std::memcpy(given.from, lay_out(t, i, *before_[i]).from, given.bytes);
            }
        bool opaque = opaque_before;
        theirs.all_opaque = reports ? &opaque : nullptr;
        if (!t.row->library)
            continue;
        processors::force(as.variant);
        processors::force_streaming_from(as.streaming_from);
        processors::force_fast_strings(as.strings);
        processors::force_source_order(as.source_order);
        t.row->library(theirs);
        processors::unforce();

        std::string problem;
        for (std::size_t i = 0; i < planes && problem.empty(); ++i) {
            problem = compare(t, i);
            if (!problem.empty())
                problem = "plane " + std::to_string(i) + ": " + problem;
        }
        if (problem.empty() && opaque != expected_opaque)
            problem = std::string{"opaque: expected "} + (expected_opaque ? "true" : "false");
        if (!problem.empty())
            return describe(t) + ", " + processors::name(as.variant) +
                   (as.streaming_from == 0 ? ", past the caches" : "") + (as.strings ? ", by strings" : "") +
                   (as.source_order ? ", in the source's order" : "") + "\n" + problem;
    }
    return {};
}

} // namespace quillo::conversions
