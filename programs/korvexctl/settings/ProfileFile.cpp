#include "korvexctl/settings/ProfileFile.h"

#include <algorithm>
#include <map>
#include <optional>
#include <sstream>
#include <system_error>
#include <utility>

#include "korvexctl/cli/ExitCodes.h"
#include "platform/os/File.h"
#include "platform/os/FileName.h"
#include "platform/text/Printable.h"
#include "toml/ParseToml.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20U;

/// What a field's value looks like in a profile.
const char* TypeText(const Field& field) {
    switch (field.kind) {
        case FieldKind::Switch:
            return "true or false";
        case FieldKind::Word:
            return "a text in quotes";
        case FieldKind::Tenths:
            return "a number";
        case FieldKind::Whole:
            break;
    }
    return "a whole number";
}

std::variant<double, std::string> ReadField(const Field& field, const toml::node& node) {
    std::optional<double> value;
    if (const auto* text = node.as_string(); text != nullptr && field.kind == FieldKind::Word) {
        return ReadValueText(field, text->get());
    }
    if (const auto* on = node.as_boolean(); on != nullptr && field.kind == FieldKind::Switch) {
        return on->get() ? 1.0 : 0.0;
    }
    const bool number = field.kind == FieldKind::Whole || field.kind == FieldKind::Tenths;
    if (const auto* whole = node.as_integer(); whole != nullptr && number) {
        value = static_cast<double>(whole->get());
    } else if (const auto* real = node.as_floating_point();
               real != nullptr && field.kind == FieldKind::Tenths) {
        value = real->get();
    }
    if (!value) {
        return std::string(TypeText(field)) + " is expected";
    }
    return ReadNumber(field, *value);
}

/// Collects the values of one parsed text, and the errors in it.
class ProfileReader {
public:
    void Read(const toml::table& root) {
        for (const auto& [key, node] : root) {
            const std::string name(key.str());
            const toml::table* table = node.as_table();
            // exposure.0 = 5.0 is a table "exposure" with a key "0".
            if (FindSetting(name) == nullptr && table != nullptr && !table->empty()) {
                for (const auto& [part, value] : *table) {
                    ReadSettingNode(name + "." + std::string(part.str()), part, value);
                }
            } else {
                ReadSettingNode(name, key, node);
            }
        }
    }

    std::variant<Profile, ProfileError> Result() {
        const auto first = std::min_element(
            m_errors.begin(), m_errors.end(),
            [](const ProfileError& a, const ProfileError& b) { return a.line < b.line; });
        if (first != m_errors.end()) {
            return *first;
        }
        Profile profile;
        for (const Setting& setting : AllSettings()) {
            if (const auto found = m_values.find(&setting); found != m_values.end()) {
                profile.settings.push_back({&setting, found->second});
            }
        }
        return profile;
    }

private:
    void Wrong(const toml::key& key, std::string message) {
        m_errors.push_back({static_cast<int>(key.source().begin.line), std::move(message)});
    }

    void ReadSettingNode(const std::string& name, const toml::key& key, const toml::node& node) {
        const Setting* setting = FindSetting(name);
        if (setting == nullptr) {
            Wrong(key, UnknownSetting(name));
            return;
        }
        std::optional<SettingValue> value = setting->fields.size() == 1
                                                ? ReadOne(*setting, key, node)
                                                : ReadSeveral(*setting, key, node);
        if (value && !m_values.emplace(setting, std::move(*value)).second) {
            Wrong(key, name + " is given twice");
        }
    }

    std::optional<SettingValue> ReadOne(const Setting& setting, const toml::key& key,
                                        const toml::node& node) {
        const auto read = ReadField(setting.fields.front(), node);
        if (const auto* wrong = std::get_if<std::string>(&read)) {
            Wrong(key, setting.name + ": " + *wrong);
            return std::nullopt;
        }
        return SettingValue{std::get<double>(read)};
    }

    std::optional<SettingValue> ReadSeveral(const Setting& setting, const toml::key& key,
                                            const toml::node& node) {
        const toml::table* table = node.as_table();
        if (table == nullptr) {
            Wrong(key, setting.name + ": expected a table such as " + Shape(setting));
            return std::nullopt;
        }
        SettingValue value;
        for (const Field& field : setting.fields) {
            const toml::node* part = table->get(field.name);
            if (part == nullptr) {
                Wrong(key, setting.name + ": missing key \"" + field.name + "\"");
                return std::nullopt;
            }
            const auto read = ReadField(field, *part);
            if (const auto* wrong = std::get_if<std::string>(&read)) {
                Wrong(key, setting.name + ": " + field.name + ": " + *wrong);
                return std::nullopt;
            }
            value.push_back(std::get<double>(read));
        }
        if (table->size() != setting.fields.size()) {
            Wrong(key, setting.name + ": unknown key; expected " + Shape(setting));
            return std::nullopt;
        }
        return value;
    }

    static std::string Shape(const Setting& setting) {
        std::string text;
        for (const Field& field : setting.fields) {
            text += (text.empty() ? "{ " : ", ") + std::string(field.name) + " = ...";
        }
        return text + " }";
    }

    std::map<const Setting*, SettingValue> m_values;
    std::vector<ProfileError> m_errors;
};

std::string TomlField(const Field& field, double value) {
    if (field.kind == FieldKind::Switch) {
        return value != 0 ? "true" : "false";
    }
    const std::string text = ValueText(std::span(&field, 1), {value});
    return field.kind == FieldKind::Word ? '"' + text + '"' : text;
}

std::string TomlValue(const Setting& setting, const SettingValue& value) {
    if (setting.fields.size() == 1) {
        return TomlField(setting.fields.front(), value.at(0));
    }
    std::string text;
    for (std::size_t i = 0; i < setting.fields.size(); ++i) {
        text += (text.empty() ? "{ " : ", ") + std::string(setting.fields[i].name) + " = " +
                TomlField(setting.fields[i], value.at(i));
    }
    return text + " }";
}

[[noreturn]] void Refuse(const std::string& where, const std::string& what) {
    throw CommandError(ExitCode::ProfileRefused, where + ": " + what);
}

/// Opening a folder succeeds; reading it fails.
std::string ReadText(const std::filesystem::path& file) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
        !std::filesystem::is_directory(status)) {
        // Opening a FIFO would wait for a writer.
        Refuse(os::TextOf(file), "is not a regular file");
    }
    std::string text = os::ReadWithoutWaiting(file, kLargestFile + 1, error);
    if (error) {
        Refuse(os::TextOf(file), error.message());
    }
    if (text.size() > kLargestFile) {
        Refuse(os::TextOf(file), "larger than 1 MiB, so it is not a profile");
    }
    return text;
}

}  // namespace

std::variant<Profile, ProfileError> ParseProfile(std::string_view text) {
    const auto parsed = ParseToml(text);
    if (const auto* wrong = std::get_if<TomlError>(&parsed)) {
        return ProfileError{wrong->line, text::Printable(wrong->what)};
    }
    ProfileReader reader;
    reader.Read(std::get<toml::table>(parsed));
    std::variant<Profile, ProfileError> result = reader.Result();
    if (auto* error = std::get_if<ProfileError>(&result)) {
        error->message = text::Printable(error->message);
    }
    return result;
}

std::string WriteProfile(std::span<const Reading> readings) {
    std::ostringstream text;
    text << "# Settings of a scanner head. \"korvexctl profile load\" sends the settings given "
            "here and\n"
            "# leaves the others unchanged.\n";
    for (const Reading& reading : readings) {
        const Setting& setting = *reading.setting;
        text << "\n# " << setting.help << "\n# " << RangeText(setting, Notation::Profile) << '\n';
        if (reading.Known()) {
            text << setting.name << " = " << TomlValue(setting, reading.value) << '\n';
        } else {
            text << "# unknown: the head does not report " << setting.name
                 << "; it can be set here\n";
        }
    }
    return text.str();
}

Profile ReadProfileFile(const std::filesystem::path& file) {
    std::variant<Profile, ProfileError> result = ParseProfile(ReadText(file));
    if (const auto* error = std::get_if<ProfileError>(&result)) {
        Refuse(os::TextOf(file) + ":" + std::to_string(error->line), error->message);
    }
    return std::move(std::get<Profile>(result));
}

}  // namespace Korvex3Sync::korvexctl
