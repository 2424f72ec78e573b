// Times every conversion against its peers and against the memory limits, all in one run. In each round every candidate
// takes its turn in rotating order, so that a busy machine slows all of them; what is reported are medians and, from
// pairs of the same round, ratios.
#include "bench/frames.h"
#include "bench/limits.h"
#include "bench/report.h"
#include "bench/row.h"
#include "lib/format_conversion/detail/processor.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

using seconds = std::chrono::duration<double>;

int rounds = 40;

double timed(std::function<void(frame const&)> const& run, frame const& f)
{
    auto const start = std::chrono::steady_clock::now();
    run(f);
    return seconds(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The limits see the planes of either side as one: they follow each other in memory.
std::vector<candidate> with_limits(row const& r, bool bottom_up, std::size_t in, std::size_t out)
{
    auto const limit = [&](char const* name, auto* loop) {
        return candidate{name, job::less, [=](frame const& f) {
                             unsigned char const* from = f.in[0];
                             if (f.in_stride[0] < 0)
                                 from += static_cast<std::ptrdiff_t>(f.height - 1) * f.in_stride[0];
                             loop(from, in, f.out[0], out);
                         }};
    };
    std::vector<candidate> all;
    std::copy_if(r.candidates.begin(), r.candidates.end(), std::back_inserter(all),
                 [&](candidate const& c) { return c.bottom_up || !bottom_up; });
    all.push_back(limit("memcpy", copy_memory));
    all.push_back(limit("store limit", ordinary_stores));
    all.push_back(limit("streaming limit", streaming_stores));
    return all;
}

// How one turn of a candidate is timed, in seconds a frame.
enum class mode { cold, pair, hot };

double turn(mode m, ring& frames, candidate const& c)
{
    switch (m) {
    case mode::cold:
        return timed(c.run, frames.next());
    case mode::pair: {
        // Two targets in turn, each read once before it comes again, as the consumer of a double buffer does.
        double spent = 0;
        for (std::size_t n = 0; n < 6; ++n) {
            frame const f = frames.next_into(n % 2);
            double const taken = timed(c.run, f);
            streaming_stores(f.out[0], frames.out_bytes(), nullptr, 0);
            spent += n < 2 ? 0 : taken;
        }
        return spent / 4;
    }
    case mode::hot: {
        frame const f = frames.next();
        double spent = 0;
        for (int n = 0; n < 34; ++n)
            spent += timed(c.run, f);
        return spent;
    }
    }
    std::abort();
}

void measure(benchmark::State& state, row const& r, int width, int height, bool bottom_up, mode m)
{
    constexpr std::size_t larger_than_caches = 200u << 20;
    ring frames(r, width, height, bottom_up, m == mode::hot ? 0 : larger_than_caches, m == mode::hot ? 1 : 2);
    auto const candidates = with_limits(r, bottom_up, frames.in_bytes(), frames.out_bytes());
    std::vector<std::vector<double>> times(candidates.size());
    std::size_t first = 0;
    for (auto const& c : candidates)
        turn(m, frames, c); // opens what the peers open once
    for (auto _ : state) {
        for (std::size_t n = 0; n < candidates.size(); ++n) {
            std::size_t const which = (first + n) % candidates.size();
            times[which].push_back(turn(m, frames, candidates[which]));
        }
        ++first;
        state.SetIterationTime(times[0].back());
    }
    for (std::size_t n = 0; n < candidates.size(); ++n) {
        std::vector<double> ratios(times[n].size());
        std::transform(times[n].begin(), times[n].end(), times[0].begin(), ratios.begin(), std::divides<>{});
        state.counters[counter_name(candidates[n], "ms")] = median(times[n]) * 1e3;
        state.counters[counter_name(candidates[n], "speed")] = median(ratios);
    }
    double const bytes = static_cast<double>(frames.in_bytes() + frames.out_bytes()) * (m == mode::hot ? 34 : 1);
    state.counters["GB/s"] = bytes / median(times[0]) / 1e9;
}

void add(row const& r, int width, int height, mode m, char const* label)
{
    for (bool const bottom_up : {false, true}) {
        if (bottom_up && r.brief)
            continue;
        auto const name = r.name + (bottom_up ? "/bottom-up/" : "/top-down/") + label;
        benchmark::RegisterBenchmark(name.c_str(),
                                     [&r, width, height, bottom_up, m](benchmark::State& state) {
                                         measure(state, r, width, height, bottom_up, m);
                                     })
            ->UseManualTime()
            ->Iterations(rounds);
    }
}

} // namespace

} // namespace bench

int main(int count, char** words)
{
    using namespace Processing::FXlib::format_conversion;
    // Our own words come first: --rounds=N, --processor=NAME.
    auto const value = [&](char const* option) -> char const* {
        for (int n = 1; n < count; ++n)
            if (std::strncmp(words[n], option, std::strlen(option)) == 0) {
                char const* const found = words[n] + std::strlen(option);
                std::copy(words + n + 1, words + count, words + n);
                --count;
                return found;
            }
        return nullptr;
    };
    if (char const* const given = value("--rounds="))
        bench::rounds = std::max(1, std::atoi(given));
    if (char const* const given = value("--processor="))
        for (auto const p : detail::variants())
            if (std::strcmp(detail::name(p), given) == 0)
                detail::force(p);

    auto const table = bench::rows();
    for (auto const& row : table) {
        bench::add(row, 1920, 1080, bench::mode::cold, "1080/cold");
        bench::add(row, 1920, 32, bench::mode::hot, "hot");
        if (row.brief)
            continue;
        bench::add(row, 1920, 1080, bench::mode::pair, "1080/pair");
        bench::add(row, 3840, 2160, bench::mode::cold, "2160/cold");
        bench::add(row, 3840, 2160, bench::mode::pair, "2160/pair");
    }
    benchmark::AddCustomContext("kernels", detail::name(detail::chosen()));
    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words))
        return 1;
    bench::reporter lines;
    benchmark::RunSpecifiedBenchmarks(&lines);
}
