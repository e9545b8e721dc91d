// The raw twin of a directory location: the client library called directly, with nothing around it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/directory_client.h"

namespace depot::bench {

// Ends the program with a message unless a step of a measurement did its work.
void Require(bool done, const char* step);

// A connection bound as the editor for the life of the object. Every failure ends the program.
class RawDirectory {
public:
    explicit RawDirectory(unsigned port);
    ~RawDirectory();
    RawDirectory(const RawDirectory&) = delete;
    RawDirectory& operator=(const RawDirectory&) = delete;

    // The DN of each child and whether it is a folder.
    std::vector<std::pair<std::string, bool>> List(const std::string& folder) const;
    // Looks for an entry alone, without its attributes.
    void Find(const std::string& dn) const;
    // A copy of a file's bytes.
    std::vector<char> Read(const std::string& dn) const;

    void Add(const std::string& dn, const std::string& name, const std::string& contents) const;
    void AddFolder(const std::string& dn, const std::string& name) const;
    void Replace(const std::string& dn, const std::string& contents) const;
    void Rename(const std::string& dn, const std::string& newName, const std::string& parent) const;
    // Looks for entries below this one first, as deleting a tree must.
    void Delete(const std::string& dn) const;

private:
    LDAPMessage* Search(const std::string& dn, ULONG scope, std::vector<char*> attributes) const;
    std::pair<std::string, bool> Child(LDAPMessage* entry, const std::string& folder) const;

    LDAP* connection_;
};

}  // namespace depot::bench
