#include "publisher/page/metrics.h"

#include <map>
#include <sstream>
#include <vector>

namespace quillo::publisher {

namespace {

using nlohmann::json;
using labels = std::vector<std::pair<std::string, std::string>>;

std::string escaped(std::string const& value)
{
    std::string result;
    for (char const c : value)
        if (c == '\n')
            result += "\\n";
        else {
            if (c == '\\' || c == '"')
                result += '\\';
            result += c;
        }
    return result;
}

class family
{
  public:
    family(std::string name, char const* type, char const* help) : name_(std::move(name))
    {
        text_ << "# HELP " << name_ << ' ' << help << "\n# TYPE " << name_ << ' ' << type << '\n';
        text_.precision(12);
    }

    void add(labels const& of, double value)
    {
        text_ << name_;
        char before = '{';
        for (auto const& [key, label] : of) {
            text_ << before << key << "=\"" << escaped(label) << '"';
            before = ',';
        }
        text_ << (of.empty() ? " " : "} ") << value << '\n';
    }

    std::string text() const { return text_.str(); }

  private:
    std::string const name_;
    std::ostringstream text_;
};

double number(json const& of, char const* key)
{
    auto const found = of.find(key);
    return found != of.end() && found->is_number() ? found->get<double>() : 0;
}

labels label_of(json const& source) { return {{"source", source.value("path", "")}}; }

std::string plain(char const* name, char const* type, char const* help, json const& sources, char const* key)
{
    family all{name, type, help};
    for (json const& one : sources)
        all.add(label_of(one), number(one, key));
    return all.text();
}

std::string seconds(char const* name, char const* help, json const& sources, char const* key_ms)
{
    family all{name, "gauge", help};
    for (json const& one : sources)
        if (auto const value = one.find(key_ms); value != one.end() && value->is_number())
            all.add(label_of(one), value->get<double>() / 1000);
    return all.text();
}

std::string losses(json const& sources)
{
    family pictures{"quillo_video_lost_frames_total", "counter", "Pictures that did not go on, by cause."};
    family blocks{"quillo_audio_lost_blocks_total", "counter",
                  "Blocks of sound, or packets of it once encoded, that did not go on, by cause."};
    family late{"quillo_host_late_total", "counter", "Times that the host was late by more than its clock forgives."};
    for (json const& one : sources) {
        std::string const path = one.value("path", "");
        json const& lost = one.at("losses");
        auto const of = [&](char const* cause) { return labels{{"source", path}, {"cause", cause}}; };
        pictures.add(of("publisher_late"), number(lost, "video_no_slot"));
        pictures.add(of("replaced"), number(lost, "video_replaced"));
        pictures.add(of("refused"), number(lost, "video_refused"));
        pictures.add(of("encoder_late"), number(lost, "encoder_late"));
        pictures.add(of("receiver_late"), number(lost, "receiver_late"));
        blocks.add(of("publisher_late"), number(lost, "audio_no_room"));
        blocks.add(of("refused"), number(lost, "audio_refused"));
        blocks.add(of("encoder_late"), number(lost, "encoder_late_sound"));
        blocks.add(of("receiver_late"), number(lost, "receiver_late_sound"));
        blocks.add(of("displaced"), number(lost, "audio_displaced"));
        late.add({{"source", path}, {"stream", "video"}}, number(lost, "video_late"));
        late.add({{"source", path}, {"stream", "audio"}}, number(lost, "audio_late"));
    }
    return pictures.text() + blocks.text() + late.text();
}

std::string shapes(json const& sources)
{
    family width{"quillo_video_width_pixels", "gauge", "Columns of a picture."};
    family height{"quillo_video_height_pixels", "gauge", "Rows of a picture."};
    family rate{"quillo_video_frames_per_second", "gauge", "Nominal frame rate."};
    for (json const& one : sources) {
        json const& format = one.at("format");
        if (!format.is_object())
            continue;
        width.add(label_of(one), number(format, "width"));
        height.add(label_of(one), number(format, "height"));
        json const& fraction = format.at("rate");
        rate.add(label_of(one), fraction.at(0).get<double>() / fraction.at(1).get<double>());
    }
    return width.text() + height.text() + rate.text();
}

std::string receivers(json const& sources)
{
    family all{"quillo_receivers", "gauge", "Receivers, by mount."};
    for (json const& one : sources) {
        std::map<std::string, int> by_mount;
        for (json const& who : one.at("receivers"))
            ++by_mount[who.value("mount", "")];
        for (auto const& [mount, count] : by_mount)
            all.add({{"source", one.value("path", "")}, {"mount", mount}}, count);
    }
    return all.text();
}

std::string away(json const& sources)
{
    family all{"quillo_source_away", "gauge", "Whether the sender has gone and viewers see a slate."};
    for (json const& one : sources)
        all.add(label_of(one), one.value("away", false) ? 1 : 0);
    return all.text();
}

std::string turned_away(json const& status)
{
    family all{"quillo_connections_refused_total", "counter", "Connections and requests turned away, by cause."};
    for (auto const& [cause, count] : status.at("turned_away").items())
        all.add({{"cause", cause}}, count.get<double>());
    return all.text();
}

std::string names(json const& sources)
{
    family all{"quillo_source_info", "gauge", "What a source is called."};
    for (json const& one : sources)
        all.add({{"source", one.value("path", "")}, {"name", one.value("name", "")}, {"id", one.value("id", "")}}, 1);
    return all.text();
}

} // namespace

std::string metrics_text(json const& status)
{
    json const& sources = status.at("sources");
    family build{"quillo_build_info", "gauge", "The program that answers."};
    build.add({{"version", status.value("version", "")}}, 1);
    family count{"quillo_sources", "gauge", "Sources being published."};
    count.add({}, static_cast<double>(sources.size()));
    return build.text() + count.text() + turned_away(status) + names(sources) + away(sources) + shapes(sources) +
           plain("quillo_video_frames_total", "counter", "Pictures that came from the host while somebody watched.",
                 sources, "frames_in") +
           plain("quillo_audio_blocks_total", "counter", "Blocks of sound that came from the host, likewise.", sources,
                 "blocks_in") +
           plain("quillo_timeline_restarts_total", "counter", "Seeks, loops and stalls of the host's time.", sources,
                 "anchors") +
           plain("quillo_audio_breaks_total", "counter",
                 "Times that silence stood before the host's sound went on: after a rest, a seek or a stall.", sources,
                 "sound_breaks") +
           plain("quillo_receiver_frames_total", "counter", "Pictures given to receivers.", sources, "frames_sent") +
           losses(sources) + receivers(sources) +
           seconds("quillo_hand_over_seconds", "From the host's send call to the publisher.", sources, "hand_over_ms") +
           seconds("quillo_av_offset_seconds", "Pictures behind the sound of the same time.", sources, "av_offset_ms");
}

} // namespace quillo::publisher
