#include "depotctl/directory_probe.h"

#include <algorithm>
#include <new>

#include "depotctl/directory_words.h"
#include "depotctl/encoding.h"
#include "depotctl/hidden_entries.h"
#include "depotctl/network.h"
#include "depotctl/schema_classes.h"
#include "directory/paged_search.h"
#include "model/depot_paths.h"
#include "platform/text.h"
#include "store/directory_store.h"

namespace depot::ctl {
namespace {

constexpr std::uint32_t kTlsFromTheStart = 2;

// Asks for the entries alone.
constexpr char kNoAttributes[] = "1.1";

bool IsStartTls(const CDepotPath& location) {
    return location.security != 0 && location.security != kTlsFromTheStart;
}

// Returns a copy that nothing else uses, with a limit for connecting that suits a person who waits.
std::unique_ptr<CDepotPath> DetachedRecord(const CDepotPath& location) {
    std::unique_ptr<CDepotPath> record = location.Clone();
    if (!record) throw std::bad_alloc();
    record->owner = nullptr;
    // A longer one is the limit of each answer as well, and some clients do not secure a connection
    // that was made with a limit.
    const bool mayShorten = record->connectTimeout <= CDepotPath::kDefaultConnectTimeout;
    if (mayShorten && !IsStartTls(*record)) {
        record->connectTimeout = ConnectLimit(record->connectTimeout);
    }
    return record;
}

bool Defines(const std::vector<std::string>& definitions, const std::string& name) {
    const std::string quoted = "'" + name + "'";
    return std::any_of(definitions.begin(), definitions.end(), [&](const std::string& definition) {
        return FindNoCase(definition, quoted) != std::string::npos;
    });
}

Problem HiddenClass() {
    return {"entries are there but their class may not be read",
            "grant the user the right to read objectClass", LDAP_NO_SUCH_ATTRIBUTE};
}

std::optional<Problem> UnlessDone(std::uint32_t code) {
    if (code == LDAP_SUCCESS) return std::nullopt;
    return ProblemFor(code);
}

}  // namespace

Problem ProblemFor(std::uint32_t code) {
    const DirectoryWords words = WordsFor(code);
    return {words.text, words.advice, code, MeansUnreachable(code)};
}

bool IsAboutCredentials(const Problem& problem) {
    return problem.code == LDAP_INVALID_CREDENTIALS || problem.code == LDAP_INAPPROPRIATE_AUTH ||
           problem.code == LDAP_UNWILLING_TO_PERFORM;
}

DirectoryProbe::DirectoryProbe(CDepotPath& location)
    : path_(ExpandedPath(location)),
      record_(DetachedRecord(location)),
      connectTimeout_(location.connectTimeout),
      directory_(std::make_unique<CLDAPItems>(record_.get())) {}

std::optional<Problem> DirectoryProbe::MissingParts() const {
    if (Client().library == nullptr) {
        return Problem{"this machine has no directory client (wldap32.dll)",
                       "repair the Windows installation", LDAP_SERVER_DOWN, true};
    }
    if (record_->host.empty()) {
        return Problem{"no server is named", "set Host", LDAP_PARAM_ERROR, true};
    }
    return std::nullopt;
}

std::optional<Problem> DirectoryProbe::Reach() const {
    if (auto problem = MissingParts()) return problem;
    const std::optional<std::string> reason =
        WhyNobodyAnswers(record_->host, record_->port, connectTimeout_);
    if (!reason) return std::nullopt;
    return Problem{*reason, "check Host and Port, the network, and that the server runs",
                   LDAP_SERVER_DOWN, true};
}

std::optional<Problem> DirectoryProbe::LogOn(const std::string& userName,
                                             const std::string& password) {
    if (auto problem = MissingParts()) return problem;
    hasTried_ = true;
    record_->username = userName;
    record_->password = password;
    // A connection that failed serves no more.
    directory_ = std::make_unique<CLDAPItems>(record_.get());
    const Result connected = directory_->Connection().ConnectQuietly();
    if (connected) return std::nullopt;
    return WhyNotLoggedOn(CodeOf(connected));
}

// The client says little of why it has no connection.
Problem DirectoryProbe::WhyNotLoggedOn(std::uint32_t code) const {
    Problem problem = ProblemFor(code);
    // Nothing but the user is named in a bind.
    if (code == LDAP_INVALID_DN_SYNTAX) {
        problem.text =
            "the user name is not one that the server takes: no valid distinguished name (LDAP " +
            std::to_string(code) + ")";
        problem.advice =
            "correct Username; directories take the name of an entry, such as "
            "cn=Anna,dc=example,dc=com";
    }
    if (problem.isUnreachable) {
        if (const auto reason = Reach()) return *reason;
    }
    if (IsStartTls(*record_) && !IsAboutCredentials(problem)) {
        if (const auto reason = WhyNotSecured()) return *reason;
    }
    return problem;
}

std::optional<Problem> DirectoryProbe::WhyNotSecured() const {
    DirectoryClient& client = Client();
    LDAP* const opened = client.ldap_init(ClientText(record_->host), record_->port);
    const UniqueLdap session(opened, {&client});
    if (!session) return std::nullopt;
    ULONG version = record_->version;
    client.ldap_set_option(opened, LDAP_OPT_PROTOCOL_VERSION, &version);
    client.ldap_set_option(opened, LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
    ULONG serverCode = LDAP_SUCCESS;
    const std::uint32_t code =
        client.ldap_start_tls_s(opened, &serverCode, nullptr, nullptr, nullptr);
    if (code == LDAP_SUCCESS) return std::nullopt;
    return Problem{
        "the connection cannot be secured with StartTLS (LDAP " + std::to_string(code) + ")",
        "check the server's certificate, or set Security", code, MeansUnreachable(code)};
}

std::chrono::microseconds DirectoryProbe::RoundTrip() {
    constexpr int kTrips = 3;
    auto shortest = std::chrono::microseconds::max();
    for (int trip = 0; trip < kTrips; ++trip) {
        const auto start = std::chrono::steady_clock::now();
        static_cast<void>(EntrySearch(*directory_, kNoAttributes).Run({}, LDAP_SCOPE_BASE));
        const auto taken = std::chrono::steady_clock::now() - start;
        shortest = std::min(shortest, std::chrono::duration_cast<std::chrono::microseconds>(taken));
    }
    return shortest;
}

std::string DirectoryProbe::ProbeDN() const {
    return EntryDN(directory_->Schema().NamingNames().file, kProbeFileName, BaseDN());
}

std::optional<Problem> DirectoryProbe::TryWriting() {
    const Result tested = DirectoryStore(*directory_).TestWritable(ProbeDN());
    if (tested) return std::nullopt;
    return ProblemFor(CodeOf(tested));
}

std::optional<Problem> DirectoryProbe::TryReading(bool mayWrite) {
    if (mayWrite) return TryReadingOwnFile();
    if (HidesClasses(*directory_, BaseDN())) return HiddenClass();
    const std::string file = FirstFile();
    return file.empty() ? std::nullopt : TryReading(file);
}

std::optional<Problem> DirectoryProbe::TryReadingOwnFile() {
    EntryStore& entries = directory_->Entries();
    const std::string dn = ProbeDN();
    const FileBuffer probe = {1, std::make_unique<std::uint8_t[]>(1 + kFileBufferReserve)};
    if (!entries.AddFile(dn, kProbeFileName, probe.bytes.get(), probe.length)) return std::nullopt;
    std::optional<Problem> problem = TryReading(dn);
    static_cast<void>(entries.RemoveUnchanged(dn, probe));
    return problem;
}

// Returns the DN of a file, level by level; empty where none is found in good time.
std::string DirectoryProbe::FirstFile() {
    constexpr std::size_t kMostFolders = 16;
    std::vector<std::string> folders = {BaseDN()};
    for (std::size_t next = 0; next < std::min(folders.size(), kMostFolders); ++next) {
        LdapItemList children;
        static_cast<void>(directory_->Entries().List(folders[next], children));
        for (const CLDAPItem* child : children) {
            if (child->isFolder == 0) return child->path;
            folders.push_back(child->path);
        }
    }
    return {};
}

std::optional<Problem> DirectoryProbe::TryReading(const std::string& dn) {
    EntryStore& entries = directory_->Entries();
    EntryKind kind = EntryKind::kOther;
    const Result looked = entries.FindKind(dn, kind);
    if (looked.Is(Reason::kMissing)) {
        return Problem{"entries may not be seen", "grant the user the right to read them",
                       CodeOf(looked)};
    }
    if (!looked) return ProblemFor(CodeOf(looked));
    if (kind != EntryKind::kFile) return HiddenClass();
    FileBuffer contents;
    const Result read = entries.ReadSeen(dn, contents);
    if (read) return std::nullopt;
    return ProblemFor(CodeOf(read));
}

std::optional<Problem> DirectoryProbe::FindBase() {
    const std::string base = BaseDN();
    const std::uint32_t code = CodeOf(directory_->Entries().Find(base));
    if (code != LDAP_NO_SUCH_OBJECT) return UnlessDone(code);
    return Problem{"the base \"" + Utf8FromAnsi(base) + "\" is not there, or may not be seen",
                   "create the entry, correct Path, or grant the right to read it", code, false};
}

std::vector<std::string> DirectoryProbe::FindConflicts(std::optional<Problem>& problem) {
    std::vector<std::string> names;
    const Result found = FindReplicationConflicts(*directory_, BaseDN(), names);
    problem = UnlessDone(CodeOf(found));
    return names;
}

std::optional<Problem> DirectoryProbe::ListBase(bool& inPages) {
    const std::uint32_t code =
        EntrySearch(*directory_, kNoAttributes).Run(BaseDN(), LDAP_SCOPE_ONELEVEL);
    inPages = code == LDAP_SIZELIMIT_EXCEEDED;
    return UnlessDone(inPages ? ListBaseInPages() : code);
}

std::uint32_t DirectoryProbe::ListBaseInPages() {
    PagedSearch pages(Client(), directory_->Connection().Paging(), Session());
    if (!pages.IsOffered()) return LDAP_SIZELIMIT_EXCEEDED;
    std::uint32_t code = LDAP_SUCCESS;
    do {
        UniqueLdapMessage page;
        code = pages.Next({BaseDN(), "(objectClass=*)", {kNoAttributes}}, page);
    } while (code == LDAP_SUCCESS && pages.HasMore());
    return code;
}

std::vector<std::string> DirectoryProbe::Values(const std::string& dn,
                                                const std::string& attribute) {
    EntrySearch search(*directory_, attribute);
    if (search.Run(dn, LDAP_SCOPE_BASE) != LDAP_SUCCESS) return {};
    const auto all = search.Values();
    return all.empty() ? std::vector<std::string>() : all.front();
}

std::optional<DirectoryProbe::SchemaGaps> DirectoryProbe::GapsOfSchema() {
    const std::vector<std::string> subentry = Values({}, "subschemaSubentry");
    if (subentry.empty()) return std::nullopt;
    const SchemaTexts texts = {Values(subentry.front(), "objectClasses"),
                               Values(subentry.front(), "attributeTypes")};
    if (texts.classes.empty() || texts.attributes.empty()) return std::nullopt;
    SchemaGaps gaps;
    const LocationSchema& schema = directory_->Schema();
    for (const std::string& name : {schema.FolderClass(), schema.FileClass()}) {
        if (!Defines(texts.classes, name)) gaps.missing.push_back(Utf8FromAnsi(name));
    }
    for (const std::string& name :
         {schema.NamingNames().folder, schema.NamingNames().file, schema.ContentsAttribute()}) {
        if (!Defines(texts.attributes, name)) gaps.missing.push_back(Utf8FromAnsi(name));
    }
    const struct {
        std::string className, attribute;
    } pairs[] = {{schema.FolderClass(), schema.NamingNames().folder},
                 {schema.FileClass(), schema.NamingNames().file},
                 {schema.FileClass(), schema.ContentsAttribute()}};
    for (const auto& pair : pairs) {
        if (!LacksAttribute(texts, pair.className, pair.attribute)) continue;
        gaps.unfit.push_back(Utf8FromAnsi(pair.className) + " has no " +
                             Utf8FromAnsi(pair.attribute));
    }
    return gaps;
}

}  // namespace depot::ctl
