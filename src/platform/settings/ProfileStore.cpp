#include "platform/settings/ProfileStore.h"

#include <atomic>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>
#include <system_error>

// Wide characters are not used. Debian's copy of the header leaves the code out unless asked.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

namespace settings {

namespace fs = std::filesystem;

namespace {

std::atomic<bool> hasUserFile{true};

/// The store has a few dozen short lines; a larger file is not ours and is not worth the memory.
constexpr std::uintmax_t kLargestFile = 1024 * 1024;
/// A file left by a run that died while writing must not block the next run for ever.
constexpr int kTemporaryNames = 16;

struct FileContent {
    bool missing = false;
    std::optional<std::string> text;
};

/// Only regular files are opened: a pipe in the store's place would block for ever.
FileContent ReadFile(const fs::path& file) {
    FileContent content;
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (status.type() == fs::file_type::not_found) {
        content.missing = true;
        return content;
    }
    if (status.type() != fs::file_type::regular) {
        return content;
    }
    std::ifstream in(file, std::ios::binary);
    std::string text(kLargestFile + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (in.bad() || !in.eof()) {
        return content;
    }
    text.resize(static_cast<std::size_t>(in.gcount()));
    content.text = std::move(text);
    return content;
}

bool WriteNewFile(const fs::path& file, const std::string& text) {
    std::FILE* out = std::fopen(file.string().c_str(), "wbx");
    if (out == nullptr) {
        return false;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), out) == text.size();
    const bool closed = std::fclose(out) == 0;
    if (written && closed) {
        return true;
    }
    std::error_code error;
    fs::remove(file, error);
    return false;
}

/// Writes beside the file and renames, so that a reader finds the old or the new text, whole.
void ReplaceFile(const fs::path& file, const std::string& text) {
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    // A store that is a link into the user's own collection of settings stays one.
    fs::path target = fs::canonical(file, error);
    if (error) {
        target = file;
    }
    for (int i = 0; i < kTemporaryNames; ++i) {
        fs::path temporary = target;
        temporary += std::to_string(i);
        temporary += ".tmp";
        if (!WriteNewFile(temporary, text)) {
            continue;
        }
        const fs::file_status former = fs::status(target, error);
        if (!error && former.type() == fs::file_type::regular) {
            fs::permissions(temporary, former.permissions(), error);
        }
        fs::rename(temporary, target, error);
        if (error) {
            fs::remove(temporary, error);
        }
        return;
    }
}

const char* SkipBlanks(const char* first, const char* last) {
    while (first != last && (*first == ' ' || (*first >= '\t' && *first <= '\r'))) {
        ++first;
    }
    return first;
}

/// std::from_chars takes no plus sign.
const char* SkipBlanksAndPlus(const char* first, const char* last) {
    first = SkipBlanks(first, last);
    if (last - first > 1 && first[0] == '+' && first[1] != '-') {
        ++first;
    }
    return first;
}

}  // namespace

class ProfileStore::Ini {
  public:
    /// True unless there is a file that cannot be read.
    bool Load(const fs::path& file) {
        if (file.empty()) {
            return false;
        }
        const FileContent content = ReadFile(file);
        if (!content.text) {
            return content.missing;
        }
        return m_data.LoadData(content.text->data(), content.text->size()) >= 0;
    }

    const char* Find(const char* section, const char* key) const {
        return m_data.GetValue(section, key, nullptr);
    }

    bool Set(const std::string& section, const std::string& key, const std::string& value) {
        return m_data.SetValue(section.c_str(), key.c_str(), value.c_str()) >= 0;
    }

    bool Print(std::string& text) const { return m_data.Save(text) >= 0; }

  private:
    CSimpleIniA m_data;
};

ProfileStore::ProfileStore(fs::path file)
    : m_file(std::move(file)), m_ini(std::make_unique<Ini>()) {
    try {
        m_ini->Load(m_file);
    } catch (const std::ios_base::failure&) {
        m_ini = std::make_unique<Ini>();
    } catch (const fs::filesystem_error&) {
        m_ini = std::make_unique<Ini>();
    }
}

ProfileStore::~ProfileStore() = default;

void ProfileStore::UseNoUserFile() noexcept {
    hasUserFile = false;
}

fs::path ProfileStore::UserFile() {
    if (!hasUserFile) {
        return {};
    }
    fs::path folder;
    if (const char* configured = std::getenv("XDG_CONFIG_HOME")) {
        folder = configured;
    }
    if (!folder.is_absolute()) {
        const char* home = std::getenv("HOME");
        folder = home == nullptr ? "" : home;
        if (!folder.is_absolute()) {
            return {};
        }
        folder /= ".config";
    }
    return folder / "Tamsfield Institute" / "kestrane.ini";
}

int ProfileStore::GetProfileInt(const char* section, const char* key,
                                int defaultValue) const noexcept {
    const char* text = m_ini->Find(section, key);
    if (text == nullptr) {
        return defaultValue;
    }
    const char* const last = text + std::char_traits<char>::length(text);
    int value = defaultValue;
    const auto parsed = std::from_chars(SkipBlanksAndPlus(text, last), last, value);
    return parsed.ec == std::errc() ? value : defaultValue;
}

std::string ProfileStore::GetProfileString(const char* section, const char* key,
                                           const std::string& defaultValue) const {
    const char* text = m_ini->Find(section, key);
    return text == nullptr ? defaultValue : std::string(text);
}

void ProfileStore::WriteProfileInt(const char* section, const char* key, int value) noexcept {
    try {
        WriteProfileString(section, key, std::to_string(value));
    } catch (const std::exception&) {
        // As any other failure to write.
    }
}

void ProfileStore::WriteProfileString(const char* section, const char* key,
                                      const std::string& value) noexcept {
    try {
        if (value.find_first_of(std::string("\r\n\0", 3)) != std::string::npos) {
            return;
        }
        if (m_ini->Set(section, key, value)) {
            m_written[{section, key}] = value;
        }
    } catch (const std::exception&) {
        // As any other failure to write.
    }
}

void ProfileStore::Flush() noexcept {
    try {
        Ini current;
        if (m_written.empty() || !current.Load(m_file)) {
            return;
        }
        bool differs = false;
        for (const auto& [address, value] : m_written) {
            const char* stored = current.Find(address.first.c_str(), address.second.c_str());
            if (stored == nullptr || value != stored) {
                differs = true;
                current.Set(address.first, address.second, value);
            }
        }
        std::string text;
        if (differs && current.Print(text)) {
            ReplaceFile(m_file, text);
        }
        m_written.clear();
    } catch (const std::exception&) {
        // The run's own work is done; a store that cannot be written is not worth its failure.
    }
}

std::string FormatStoredFloat(float value) {
    // The largest float has 39 digits before the point.
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, static_cast<double>(value),
                                   std::chars_format::fixed, 6);
    return std::string(text, end.ptr);
}

float ParseStoredFloat(const std::string& text) noexcept {
    const char* const last = text.data() + text.size();
    double value = 0.0;
    std::from_chars(SkipBlanksAndPlus(text.data(), last), last, value);
    return static_cast<float>(value);
}

}  // namespace settings
