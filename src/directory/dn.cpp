#include "directory/dn.h"

#include "directory/dn_escapes.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::string_view kParentStep = "\\..";

// A component that is exactly ".." and has a name, not just the base, before it.
std::size_t FindParentStep(std::string_view path) {
    for (std::size_t at = FindText(path, kParentStep); at != std::string_view::npos;
         at = FindText(path, kParentStep, at + 1)) {
        const std::size_t end = at + kParentStep.size();
        if (end == path.size() || FindSeparator(path, end) == end) return at;
    }
    return std::string_view::npos;
}

std::string ResolveParentSteps(std::string path) {
    for (;;) {
        const std::size_t step = FindParentStep(path);
        if (step == std::string::npos || step == 0) return path;
        const std::size_t previous = FindLastSeparator(path, step);
        if (previous == std::string::npos) return path;
        path.erase(previous, step + kParentStep.size() - previous);
    }
}

// Returns the name of an entry that is named by this attribute.
std::optional<std::string> WithoutPrefix(std::string_view component, const std::string& attribute) {
    const std::optional<TextMatch> match = FindMatchNoCase(component, attribute + "=");
    if (!match) return std::nullopt;
    std::string name(component);
    return UnescapedName(name.erase(match->start, match->length));
}

// Returns the byte of the escape "\XX" at that position when it lies above ASCII.
std::optional<char> EscapedByteAt(std::string_view text, std::size_t at) {
    if (at >= text.size() || text[at] != '\\') return std::nullopt;
    const std::optional<unsigned char> byte = HexByte(text, at + 1);
    return byte && *byte >= 0x80 ? std::optional(static_cast<char>(*byte)) : std::nullopt;
}

std::string EscapedRunAt(std::string_view text, std::size_t at) {
    std::string bytes;
    while (const std::optional<char> byte = EscapedByteAt(text, at + 3 * bytes.size())) {
        bytes.push_back(*byte);
    }
    return bytes;
}

std::string ObjectKey(std::string_view mark, std::string_view host, std::uint32_t port) {
    // An object's name has at most 259 characters, 30 of which precede the key; a backslash in it
    // would stand for a folder of objects.
    constexpr std::size_t kLongestKey = 259 - 30;
    const std::string key = Concatenate({mark, ToLower(host), ":", NumberText(port)});
    return ReplaceAllNoCase(CutToBytes(key, kLongestKey), "\\", "/");
}

}  // namespace

bool NamingAttributes::AreTheSame() const {
    return EqualsNoCase(folder, file);
}

std::string EntryDN(std::string_view attribute, std::string_view name, std::string_view parent) {
    return Concatenate({attribute, "=", EscapedName(name), ",", parent});
}

std::string PathToDN(std::string_view path, const NamingAttributes& attributes) {
    std::string rest = ResolveParentSteps(RemoveTrailingBackslash(path));
    std::string dn;
    for (std::size_t at = FindLastSeparator(rest); at != std::string::npos;
         at = FindLastSeparator(rest)) {
        const std::string name = rest.substr(at + 1);
        const bool isFile = FindCharacter(name, '.') != std::string::npos;
        dn.append(isFile ? attributes.file : attributes.folder)
            .append("=")
            .append(EscapedName(name));
        dn.push_back(',');
        rest.resize(at);
    }
    return dn.append(rest);
}

std::optional<EntryName> SplitFirstComponent(std::string_view component,
                                             const NamingAttributes& attributes,
                                             FileExtension extension) {
    std::optional<std::string> name = WithoutPrefix(component, attributes.file);
    bool isFolder =
        name && attributes.AreTheSame() && FindCharacter(*name, '.') == std::string::npos;
    if (!name) {
        name = WithoutPrefix(component, attributes.folder);
        isFolder = true;
    }
    if (!name) return std::nullopt;
    if (!isFolder && extension == FileExtension::kStrip) *name = StripExtension(*name);
    return EntryName{*std::move(name), isFolder};
}

std::string JoinComponents(const std::vector<std::string>& components, std::size_t first) {
    std::string dn;
    for (std::size_t index = first; index < components.size(); ++index) {
        if (index > first) dn.push_back(',');
        dn.append(components[index]);
    }
    return dn;
}

std::string DecodeNonAsciiEscapes(std::string_view component,
                                  std::optional<std::string> (*convert)(std::string_view utf8)) {
    std::string decoded;
    for (std::size_t at = 0; at < component.size();) {
        const std::string run = EscapedRunAt(component, at);
        // Of an escaped backslash the second one begins no escape.
        const std::size_t escape = EscapeLength(component, at);
        const std::size_t alone = escape > 0 ? escape : CharacterLength(component, at);
        const std::size_t length = run.empty() ? alone : 3 * run.size();
        const std::optional<std::string> text = run.empty() ? std::nullopt : convert(run);
        decoded.append(text ? *text : std::string(component.substr(at, length)));
        at += length;
    }
    return decoded;
}

std::string UnsafeNamesText(std::uint32_t count) {
    if (count == 0) return {};
    return Concatenate({CountText(count, "entry was", "entries were"),
                        " left out: the name cannot be the name of a local file."});
}

std::string UnseenContentsText(std::string_view name) {
    return Concatenate({"\"", name, "\": ", kUnseenContentsText});
}

std::string ServerKey(std::string_view host, std::uint32_t port) {
    return ObjectKey("", host, port);
}

std::string SecuredServerKey(std::string_view host, std::uint32_t port) {
    return ObjectKey("TLS ", host, port);
}

}  // namespace depot
