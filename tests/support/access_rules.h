// Access rules of a real directory server under which the editor may write and not read.
#pragma once

#include <string>

#include "support/directory_server.h"

namespace depot::test {

// The settings of a server whose editor has only these rights to one attribute, and may otherwise
// write everything.
inline std::string EditorHas(const std::string& rights, const std::string& attribute) {
    const std::string editor = " by dn.exact=\"" + std::string(kEditor) + "\" ";
    return "database access to attrs=userPassword by anonymous auth by * none\n"
           "database access to attrs=" +
           attribute + editor + rights + " by * read\n" + "database access to *" + editor +
           "write by * read\n";
}

// Contents are written without being shown.
inline std::string WritesUnreadContents() {
    return EditorHas("=w", "quillonFileContentsBinary");
}

// A search for any entry succeeds without one.
inline std::string FindsNothing() {
    return EditorHas("=w", "objectClass");
}

// Entries are found without their classes.
inline std::string SeesNoClasses() {
    return EditorHas("=wscx", "objectClass");
}

}  // namespace depot::test
