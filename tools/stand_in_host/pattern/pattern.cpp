#include "tools/stand_in_host/pattern/pattern.h"
#include "tools/stand_in_host/pattern/counter_strip.h"
#include "tools/stand_in_host/pattern/digits.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <numbers>

namespace quillo::stand_in {

namespace {

constexpr double flash_length_s = 0.08;
constexpr double beep_frequency = 1000;
constexpr double beep_level = 0.5;

constexpr color bars[] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0},
                          {191, 0, 191},   {191, 0, 0},   {0, 0, 191},   {0, 0, 0}};

// Heights of the picture's parts.
struct layout
{
    explicit layout(int height)
        : strip(counter_strip_rows(height)), bars(std::max(height * 11 / 18, strip)),
          line(std::max(height * 12 / 18, bars)), digits(std::max(height * 15 / 18, line))
    {
    }

    int strip, bars, line, digits; // where each ends
};

class pattern : public source
{
  public:
    explicit pattern(pattern_settings const& s) : settings(s)
    {
        static std::atomic<std::uint64_t> made{0};
        note = ++made;
    }

    std::string title() const override
    {
        static constexpr char const* names[] = {"colour bars", "colour bars with alpha", "flash and beep"};
        return names[static_cast<int>(settings.kind)];
    }

    video_description video() const override
    {
        return {settings.width, settings.height, settings.rate, 1, 1, settings.fields, settings.layout};
    }

    std::optional<audio_description> audio() const override
    {
        if (settings.channels == 0)
            return std::nullopt;
        return audio_description{settings.sample_rate, settings.channels, {}};
    }

    std::optional<std::int64_t> frame_count() const override { return std::nullopt; }

    bool draw(std::int64_t frame, picture_view const& target) override
    {
        if (settings.kind == pattern_kind::flash)
            fill(target, whole(target), is_flash(frame) ? white : black);
        else
            draw_bars(frame, target);
        draw_counter(target, static_cast<std::uint32_t>(frame));
        return true;
    }

    void read_audio(std::int64_t first, int count, float* const* channels) override
    {
        for (int c = 0; c < settings.channels; ++c)
            std::fill_n(channels[c], count, 0.0f);
        std::int64_t const length = std::llround(flash_length_s * settings.sample_rate);
        // From the flash whose beep may still sound on.
        std::int64_t const period = flash_period(settings.rate);
        std::int64_t flash = frame_at(first - length) / period * period;
        for (; beep(flash) < first + count; flash += period) {
            std::int64_t const from = std::max(first, beep(flash));
            std::int64_t const to = std::min(first + count, beep(flash) + length);
            for (std::int64_t s = from; s < to; ++s)
                for (int c = 0; c < settings.channels; ++c)
                    channels[c][s - first] = beep_sample(s - beep(flash));
        }
    }

  private:
    static rectangle whole(picture_view const& target) { return {0, 0, target.width, target.height}; }

    bool is_flash(std::int64_t frame) const
    {
        auto const length = std::llround(flash_length_s * settings.rate.n / settings.rate.d);
        return frame % flash_period(settings.rate) < std::max<std::int64_t>(length, 1);
    }

    void draw_background(layout const& rows, picture_view const& target) const
    {
        int const w = target.width;
        for (int k = 0; k < 8; ++k)
            fill(target, {k * w / 8, rows.strip, (k + 1) * w / 8, rows.bars}, bars[k]);
        bool const alpha = settings.kind == pattern_kind::alpha;
        fill_columns(target, {0, rows.digits, w, target.height}, [alpha](int x, int columns) {
            auto const level = static_cast<unsigned char>(columns > 1 ? x * 255 / (columns - 1) : 255);
            return alpha ? color{255, 255, 255, level} : color{level, level, level};
        });
    }

    void draw_bars(std::int64_t frame, picture_view const& target) const
    {
        layout const rows(target.height);
        int const w = target.width;
        if (target.note == nullptr || *target.note != note)
            draw_background(rows, target);
        if (target.note != nullptr)
            *target.note = note;
        int const line = static_cast<int>(frame % flash_period(settings.rate) * w / flash_period(settings.rate));
        fill(target, {0, rows.bars, w, rows.line}, black);
        fill(target, {line, rows.bars, line + std::max(w / 64, 1), rows.line}, white);
        draw_number(target, {0, rows.line, w * 3 / 4, rows.digits}, static_cast<std::uint64_t>(frame));
        fill(target, {w * 3 / 4, rows.line, w, rows.digits}, is_flash(frame) ? white : black);
    }

    // The first frame that begins at or after a sample, or the one before; 0 before the start.
    std::int64_t frame_at(std::int64_t sample) const
    {
        return scaled(std::max<std::int64_t>(sample, 0), settings.rate.n,
                      std::int64_t{settings.sample_rate} * settings.rate.d);
    }

    std::int64_t beep(std::int64_t flash) const { return beep_start(flash, settings.rate, settings.sample_rate); }

    float beep_sample(std::int64_t since) const
    {
        double const time_s = static_cast<double>(since) / settings.sample_rate;
        return static_cast<float>(beep_level * std::sin(2 * std::numbers::pi * beep_frequency * time_s));
    }

    pattern_settings settings;
    std::uint64_t note;
};

} // namespace

point flash_center(int width, int height) { return {width * 7 / 8, height * 27 / 36}; }

std::int64_t flash_period(frame_rate rate) { return std::max<std::int64_t>(scaled(1, rate.n, rate.d), 1); }

std::int64_t beep_start(std::int64_t frame, frame_rate rate, int sample_rate)
{
    return scaled(frame, std::int64_t{sample_rate} * rate.d, rate.n);
}

std::unique_ptr<source> make_pattern(pattern_settings const& settings) { return std::make_unique<pattern>(settings); }

} // namespace quillo::stand_in
