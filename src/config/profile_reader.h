// A profile that is read as text, whatever code page it is in.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/profile_encoding.h"
#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// A value and where it stands.
struct ProfileRow {
    std::string section, key, value;
};

// A temporary file with a profile's text in UTF-16, which the system's profile functions read
// without any code page. It belongs to this object. Texts are given and returned in UTF-8 unless
// they are wide.
class ProfileReader : NotCopied {
public:
    ProfileReader(const ProfileEncoding& encoding, std::string_view bytes);
    ~ProfileReader();

    // The system's error where the file could not be made; 0 where it was.
    DWORD Failure() const { return failure_; }
    const std::string& Path() const { return path_; }

    // Returns every value, or those of one section where `only` names it.
    std::vector<ProfileRow> Rows(const std::string& only) const;

    // Returns the name of a section, or with `section` of a key in it, as the file has it: bytes
    // that are a second spelling of one character stand for themselves there.
    std::wstring Spelled(const std::string& wanted, const wchar_t* section) const;

    // Returns a value; nothing when there is none.
    std::optional<std::wstring> Value(const std::wstring& section, const std::wstring& key) const;

    // Returns the whole text; nothing when the file is not as it was made.
    std::optional<std::wstring> Text() const;

    // A part of the text for people.
    std::string Shown(const std::wstring& text) const;

private:
    std::vector<std::wstring> Names(const wchar_t* section) const;

    const ProfileEncoding encoding_;
    const std::string path_;
    DWORD failure_ = 0;
};

// Whether the system's profile functions can take a text.
bool FitsProfiles(std::wstring_view text);

}  // namespace depot
