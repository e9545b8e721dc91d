// Real directory servers for tests, through the control connection of tools/with-slapd.
#pragma once

#include <string>

#include "config/depot_path.h"
#include "directory/ldap_items.h"

namespace depot::test {

inline constexpr char kSuffix[] = "dc=farrow,dc=test";
inline constexpr char kEditor[] = "cn=editor,dc=farrow,dc=test";
inline constexpr char kEditorPassword[] = "editor-secret";
inline constexpr char kReader[] = "cn=reader,dc=farrow,dc=test";
inline constexpr char kReaderPassword[] = "reader-secret";

// The operations of one stretch of a server's log.
struct OperationCounts {
    int binds = 0, searches = 0, adds = 0, modifications = 0, deletions = 0, renames = 0;

    friend bool operator==(const OperationCounts&, const OperationCounts&) = default;
};
std::ostream& operator<<(std::ostream& stream, const OperationCounts& counts);

// A server of the test's own with a fresh database; it ends with the object. Every request that
// fails is a test failure.
class DirectoryServer {
public:
    // `settings` is what the "start" request of the control connection takes.
    explicit DirectoryServer(const std::string& settings = {});
    ~DirectoryServer();
    DirectoryServer(const DirectoryServer&) = delete;
    DirectoryServer& operator=(const DirectoryServer&) = delete;

    const std::string& Name() const { return name_; }
    unsigned Port() const { return port_; }
    unsigned TlsPort() const { return tlsPort_; }

    void Stop() { Request("stop"); }
    void Continue() { Request("continue"); }
    // Makes this server replicate what happens at another one, which must have been started as
    // "multi"; this one is stopped and continued for it. With a port it follows through a relay.
    void Follow(const DirectoryServer& other) { Request("follow", {}, other.Name()); }
    void Follow(const DirectoryServer& other, unsigned port) {
        Request("follow", {}, other.Name() + "\t" + std::to_string(port));
    }

    // Applies changes in LDIF, in UTF-8, as the administrator.
    void Apply(const std::string& ldif) { Request("apply", ldif); }
    // Adds a folder or a file below a DN.
    void AddFolder(const std::string& name, const std::string& parent);
    void AddFile(const std::string& name, const std::string& parent, const std::string& contents);

    // Returns what ldapsearch finds, in LDIF and with long lines left whole.
    std::string Show(const std::string& base, const std::string& scope = "base",
                     const std::string& attributes = "*");
    bool Holds(const std::string& dn);

    // The operations since Mark, as counts and as the server's own lines.
    void Mark() { Request("mark"); }
    std::string Log() { return Request("log"); }
    OperationCounts Counts();
    // Waits, for two seconds at most, for what the server notes of a request that it does not
    // answer.
    bool WaitForLog(const std::string& part);

    // A listener that relays to this server and closes each connection after so many bytes.
    unsigned CutAfter(unsigned bytes);

    // A listener that relays to this server, undisturbed at first.
    unsigned Relay();
    // Disturbs each later connection of a relay once the server has sent so many bytes: "close",
    // "reset", "delay", "hold" (it stays open and says no more) or "not". Returns how many bytes
    // the server has sent through it so far.
    unsigned Disturb(unsigned relay, const std::string& how, unsigned bytes = 0);
    // Whatever the server sends through that relay arrives so much later from now on.
    void Lag(unsigned relay, unsigned seconds) {
        Request("lag", {}, std::to_string(relay) + "\t" + std::to_string(seconds));
    }

    // A folder in which no temporary file of that prefix can be made: all names are taken.
    std::string CrowdedFolder(const std::string& prefix);

    // A new volume of 64 KB; empty where the system lets nobody have one.
    std::string SmallVolume();

    // A record of a location with the editor's credentials.
    CDepotPath Location(const std::string& base = kSuffix) const;

private:
    std::string Request(const std::string& word, const std::string& text = {},
                        const std::string& arguments = {});

    std::string name_;
    unsigned port_ = 0;
    unsigned tlsPort_ = 0;
};

// The server that the tests of one program share.
DirectoryServer& SharedServer();

// A folder of the shared server that is new for this test.
std::string NewFolder();

// A port where nobody listens.
unsigned ClosedPort();

// Makes a symbolic link below Wine, which makes none itself, and removes it; all paths are those of
// the system below.
void MakeUnixLink(const std::string& target, const std::string& link);
void RemoveUnixLink(const std::string& link);

// Forgets what all processes know of a server.
void ForgetServer(unsigned port, const std::string& host = "127.0.0.1");

}  // namespace depot::test
