// A profile that is read and written as text, whatever code page it is in.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/profile_encoding.h"
#include "config/profile_reader.h"
#include "depotctl/places.h"
#include "platform/not_copied.h"

namespace depot::ctl {

// A copy of a profile in UTF-16, which the system's profile functions read and write without any
// code page. All that is not changed keeps its bytes, also those that are no characters.
//
// Texts are given and returned in UTF-8. What cannot be done ends the command.
class ProfileCopy : NotCopied {
public:
    // Copies the file `path` of `place`; `codePage` is that of EncodingOf.
    ProfileCopy(const Place& place, std::string path, unsigned codePage);

    // Returns every value, or those of one section where `only` names it.
    std::vector<ProfileRow> Rows(const std::string& only) const { return copy_.Rows(only); }

    // Returns a value, or nothing when there is none.
    std::optional<std::string> Find(const std::string& section, const std::string& key) const;

    // Writes a value of the copy so that it reads back exactly; an empty value deletes the key.
    void Write(const std::string& section, const std::string& key, const std::string& value);

    // Refuses a text that the profile cannot hold.
    void RequireCharacters(const std::string& text) const;

    // Gives the profile what its copy holds, unless another program changed it meanwhile. A file
    // that cannot be written keeps what it held.
    void Store() const;

    // The path of the copy, for those who work with files.
    const std::string& Path() const { return copy_.Path(); }

private:
    std::wstring Text() const;
    [[noreturn]] void KeepAndFail(HANDLE profile, DWORD error) const;

    const Place place_;
    const std::string path_;
    const std::string original_;  // the profile's bytes
    const ProfileEncoding encoding_;
    const ProfileReader copy_;
};

}  // namespace depot::ctl
