// How the bytes of profiles stand for characters.
//
// Applications read and write profiles in the machine's ANSI code page, which a program need not
// work in itself.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace depot {

// The number of UTF-16, for profiles that begin with its mark.
inline constexpr unsigned kUtf16 = 1200;

struct ProfileEncoding {
    unsigned codePage = 0;
    std::size_t markBytes = 0;  // what stands before the text
};

// Returns the machine's ANSI code page.
unsigned SystemCodePage();

// Returns whether a profile can be written in the code page: one of single or double bytes that
// holds ASCII, or UTF-8.
bool CanHoldProfiles(unsigned codePage);

// Returns the encoding of a profile: what its mark says, else `codePage`, else, with 0 for that,
// UTF-8 where the bytes above ASCII are valid UTF-8, and the machine's code page in any other case.
// Nothing for bytes that no application reads as a profile: UTF-16 in the other order, or half of a
// unit at its end.
std::optional<ProfileEncoding> EncodingOf(std::string_view bytes, unsigned codePage);

// Returns the profile's text without its mark. Bytes that would not come back as they are each
// become one unit that no text has, so that ProfileBytes returns exactly what was given.
std::wstring ProfileText(const ProfileEncoding& encoding, std::string_view bytes);

// Returns the bytes of a text without a mark; nothing when the code page does not have all of its
// characters.
std::optional<std::string> ProfileBytes(const ProfileEncoding& encoding, std::wstring_view text);

// Returns a part of ProfileText for people, in UTF-8.
std::string ShownProfileText(const ProfileEncoding& encoding, std::wstring_view text);

}  // namespace depot
