#include "bench/instrument/instrument_setup.h"

#include <algorithm>
#include <array>

#include "bench/instrument/text.h"

namespace kel::bench {

namespace {

enum class Kind { kNumber, kChoice, kText, kMoment };

struct Setting {
    std::string_view name;
    Kind kind;
    std::string_view factoryValue;
    std::string_view meaning;
    double minimum = 0;  // of a text: its length, as is the maximum
    double maximum = 0;
    int decimals = 0;
    std::string_view choices = {};  // separated by blanks
};

constexpr std::array kSettings{
    Setting{"station", Kind::kText, "unnamed", "name of the deployment", 1, 32},
    Setting{"interval", Kind::kNumber, "600", "seconds between two records", 1, 86400},
    Setting{"average", Kind::kNumber, "60", "seconds averaged for a record", 1, 3600},
    Setting{"burst", Kind::kNumber, "0", "samples in a burst, 0 for averages", 0, 4096},
    Setting{"rate", Kind::kNumber, "2", "samples a second in a burst", 1, 16},
    Setting{"start", Kind::kMoment, "now", "when a deployment begins"},
    Setting{"recorder", Kind::kChoice, "on", "records are kept", 0, 0, 0, "on off"},
    Setting{"declination", Kind::kNumber, "0.0", "degrees added to a heading", -180, 180, 1},
    Setting{"salinity", Kind::kNumber, "35.0", "of the water", 0, 50, 1},
    Setting{"pressoffset", Kind::kNumber, "0.000", "dbar added to a pressure", -1000, 1000, 3},
    Setting{"timeout", Kind::kNumber, "0", "idle seconds before sleep, 0 for never", 0, 3600},
    Setting{"baud", Kind::kChoice, "9600", "of the line, noted only", 0, 0, 0,
            "1200 2400 4800 9600 19200 38400 57600 115200"},
};

std::size_t indexOf(std::string_view name) {
    for (std::size_t i = 0; i < kSettings.size(); ++i) {
        if (equalIgnoringCase(kSettings[i].name, name)) return i;
    }
    throw CommandError("unknown setting");
}

std::string acceptedValues(const Setting& setting) {
    switch (setting.kind) {
        case Kind::kNumber:
            return formatNumber(setting.minimum, setting.decimals) + " to " +
                   formatNumber(setting.maximum, setting.decimals);
        case Kind::kChoice:
            return std::string(setting.choices);
        case Kind::kText:
            return "1 to " + formatNumber(setting.maximum, 0) + " characters";
        case Kind::kMoment:
            return "now or YYYY/MM/DD HH:MM:SS";
    }
    return {};
}

std::string_view withoutQuotes(std::string_view text) {
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::string checkedValue(const Setting& setting, std::string_view text) {
    switch (setting.kind) {
        case Kind::kNumber: {
            const auto value = parseNumber(text);
            if (!value || *value < setting.minimum || *value > setting.maximum) break;
            return formatNumber(*value, setting.decimals);
        }
        case Kind::kChoice: {
            for (std::string_view rest = setting.choices; !rest.empty();) {
                const auto choice = takeWord(rest);
                if (equalIgnoringCase(choice, text)) return std::string(choice);
            }
            break;
        }
        case Kind::kText: {
            const auto bare = trim(withoutQuotes(text));
            // Shown in an answer, a '>' would be taken for the prompt.
            const bool clean = bare.find_first_of("\">") == std::string_view::npos;
            if (!clean || bare.size() < setting.minimum || bare.size() > setting.maximum) break;
            return std::string(bare);
        }
        case Kind::kMoment: {
            if (equalIgnoringCase(text, "now")) return "now";
            const auto moment = parseMoment(text);
            if (!moment) break;
            return formatMoment(*moment);
        }
    }
    throw CommandError("bad value, " + std::string(setting.name) + " takes " +
                       acceptedValues(setting));
}

}  // namespace

InstrumentSetup::InstrumentSetup() {
    values_.reserve(kSettings.size());
    for (const auto& setting : kSettings)
        values_.emplace_back(setting.factoryValue);
}

void InstrumentSetup::set(std::string_view name, std::string_view value) {
    const auto index = indexOf(name);
    values_[index] = checkedValue(kSettings[index], trim(value));
}

const std::string& InstrumentSetup::get(std::string_view name) const {
    return values_[indexOf(name)];
}

double InstrumentSetup::number(std::string_view name) const {
    return parseNumber(get(name)).value();
}

std::string InstrumentSetup::toText() const {
    std::string text;
    for (std::size_t i = 0; i < kSettings.size(); ++i) {
        text.append(kSettings[i].name).append("=").append(values_[i]).append("\n");
    }
    return text;
}

InstrumentSetup InstrumentSetup::fromText(std::string_view text) {
    InstrumentSetup setup;
    for (int line = 1; !text.empty(); ++line) {
        const auto end = std::min(text.find('\n'), text.size());
        const auto content = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const auto equals = content.find('=');
        try {
            if (equals == std::string_view::npos) throw CommandError("no '=' in it");
            setup.set(content.substr(0, equals), content.substr(equals + 1));
        } catch (const CommandError& error) {
            throw CommandError("line " + std::to_string(line) + ": " + error.what());
        }
    }
    return setup;
}

std::string InstrumentSetup::help() {
    constexpr std::size_t kColumn = 12;
    std::string text;
    for (const auto& setting : kSettings) {
        std::string name(setting.name);
        name.resize(std::max(name.size() + 1, kColumn), ' ');
        text += name + std::string(setting.meaning) + " (" + acceptedValues(setting) + ")\n";
    }
    return text;
}

}  // namespace kel::bench
