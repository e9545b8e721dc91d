// Files in two depots, what was promised of them, and what becomes of them.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "component/api2.h"
#include "directory/ldap_items.h"
#include "store/store.h"
#include "support/component_depots.h"
#include "support/offline_files.h"
#include "support/relay.h"
#include "support/working_files.h"

namespace depot::test {

// A file as both stores show it.
struct ShownFile {
    std::string path;  // with its depot's prefix
    std::string bytes;
    std::string stored;  // its path in the store
};

// What is there at one moment.
struct Shown {
    std::vector<ShownFile> files;
    std::vector<ShownFile> covered;    // entries below an edit that waits
    std::vector<std::string> folders;  // without the depots themselves
    std::string rescued;               // what was recovered, waits, or is being worked on
};

// A client that does one thing after another with the files of a folder depot, "Work", and of a
// directory depot, "Corp", whose server it reaches through a relay. Each file has an identity in
// its text, which copies share. What the component acknowledged has to be found again.
class DisastersTest : public ComponentTest {
protected:
    DisastersTest();

    // Runs so many rounds for each seed; `disturb` arranges what fails in one of them, and `calm`
    // ends that.
    void Run(const std::function<void()>& disturb, const std::function<void()>& calm);
    // What a line, and a server behind it, do to a request.
    void DisturbLine();

    // Begins anew: every random choice follows from the seed, and so does what the definition of
    // the directory depot asks for.
    void Begin(unsigned seed);
    void List();
    // Does one thing, chosen at random.
    void DoOne();
    // Looks at both stores, and fails where something acknowledged is nowhere.
    void ExpectNothingLost();
    // What was done lately, for whoever has to find out what went wrong. With DEPOTINTR_TELL set it
    // is printed as it is done.
    void Note(const std::string& what, bool isDone = true);
    std::string Lately() const;

    unsigned Below(unsigned end) { return std::uniform_int_distribution(0u, end - 1)(random_); }

    DirectoryServer& server_ = SharedServer();
    std::string base_;
    Relay relay_{server_.Port()};
    std::string work_;
    // Whatever it looks at, nobody else holds meanwhile.
    std::function<std::unique_lock<std::mutex>()> rest_ = [] {
        return std::unique_lock<std::mutex>();
    };

private:
    using Lines = std::set<std::string>;

    void Edit();
    void WriteWhole();
    void CopyTo(bool mayExist);
    void MoveFile();
    void MoveFolder();
    void Rename();
    void Delete();
    void MakeCopy();
    void CopyOut();
    void Create();

    const ShownFile* AnyFile();
    std::string FreshPath(const char* ending);
    bool Session(const std::function<bool(LONG_PTR handle)>& work);
    bool WentWell(LONG_PTR handle, HRESULT result);
    // The file at this path may be gone from now on: what only it holds is no longer expected.
    void GiveUp(const std::string& path);
    bool IsShown(const std::string& id, const std::string& line, const std::string& butAt = {});
    void Look();
    void Collect(Store& store, const std::string& top, const std::string& prefix);

    std::optional<CleanWorkingFiles> cleanFiles_;
    std::optional<CleanOfflineFiles> cleanOffline_;
    std::unique_ptr<CDepotPath> location_;
    std::unique_ptr<CLDAPItems> items_;
    Com<IDepotIntrApi2> api2_;
    std::mt19937 random_;
    unsigned number_ = 0;
    Shown shown_;
    std::map<std::string, Lines> expected_;  // by the identities of the files
    std::vector<std::string> done_;
};

}  // namespace depot::test
