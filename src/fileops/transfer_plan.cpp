#include "fileops/transfer_plan.h"

#include <algorithm>
#include <set>

#include "directory/comparable_dn.h"
#include "directory/local_listing.h"
#include "directory/tree_bounds.h"
#include "platform/file_names.h"
#include "platform/local_name.h"
#include "platform/paths.h"

namespace depot {
namespace {

// Appends the steps for what a folder entry holds.
void AddEntries(CLDAPItems& directory, std::size_t parent, const LdapItemList& children,
                TransferPlan& plan) {
    // A copy: the steps move when the plan grows.
    const TransferStep folder = plan.steps[parent];
    plan.unsafeNames += directory.UnsafeNames();
    for (const CLDAPItem* child : children) {
        std::string name;
        bool nameOfFolder = false;
        if (directory.SplitEntryName(child->path, name, nameOfFolder) == 0 ||
            !IsSafeLocalName(name)) {
            ++plan.unsafeNames;
            continue;
        }
        // What the entry is, not what its name looks like: a file without a dot and a folder with
        // one keep what they hold.
        const bool isFolder = child->isFolder != 0;
        plan.steps.push_back(
            {child->path, JoinPath(folder.localPath, name), isFolder, parent, folder.depth + 1});
        if (!isFolder) ++plan.files;
    }
}

// Names that differ locally may be the same to a server.
std::uint32_t CountSharedNames(const TransferPlan& plan) {
    std::set<std::string> names;
    for (const TransferStep& step : plan.steps) names.insert(ComparableDN(step.dn));
    return static_cast<std::uint32_t>(plan.steps.size() - names.size());
}

// Names that differ to a server may be the same to the file system.
std::uint32_t CountSharedPaths(const TransferPlan& plan) {
    FileNameSet paths;
    return static_cast<std::uint32_t>(
        std::count_if(plan.steps.begin(), plan.steps.end(),
                      [&](const TransferStep& step) { return !paths.Insert(step.localPath); }));
}

}  // namespace

std::optional<TransferPlan> PlanUpload(const CLDAPItems& directory, const std::string& folder,
                                       const std::string& dn) {
    const NamingAttributes naming = directory.NamingNames();
    TransferPlan plan;
    plan.steps.push_back({dn, folder, true});
    // The list grows while it is walked: each folder's children come behind it.
    for (std::size_t next = 0; next < plan.steps.size(); ++next) {
        const TransferStep parent = plan.steps[next];
        if (!parent.isFolder) continue;
        LdapItemList children;
        std::uint32_t unsafe = 0;
        const std::uint32_t left =
            AddLocalChildren(parent.localPath, Subfolders::kTake, children, &unsafe);
        if (left == kNotListed) return std::nullopt;
        plan.unsafeNames += unsafe;
        plan.links += left - unsafe;
        for (const CLDAPItem* child : children) {
            const bool isFolder = child->isFolder != 0;
            const std::string& attribute = isFolder ? naming.folder : naming.file;
            plan.steps.push_back({EntryDN(attribute, NamePart(child->path), parent.dn), child->path,
                                  isFolder, next, parent.depth + 1});
            if (!isFolder) ++plan.files;
        }
    }
    plan.sharedNames = CountSharedNames(plan);
    return plan;
}

bool PlanDownload(CLDAPItems& directory, const std::string& dn, const std::string& folder,
                  TransferPlan& plan) {
    LdapItemList children;
    return directory.ListChildren(dn, children) != 0 &&
           PlanDownload(directory, dn, children, folder, plan);
}

bool PlanDownload(CLDAPItems& directory, const std::string& dn, const LdapItemList& children,
                  const std::string& folder, TransferPlan& plan) {
    TreeWalk walk(directory);
    plan.steps.push_back({dn, folder, true});
    AddEntries(directory, 0, children, plan);
    for (std::size_t next = 1; next < plan.steps.size(); ++next) {
        const TransferStep& parent = plan.steps[next];
        if (!parent.isFolder) continue;
        LdapItemList found;
        if (walk.List(parent.dn, parent.depth, found) != LDAP_SUCCESS) return false;
        AddEntries(directory, next, found, plan);
    }
    plan.sharedNames = CountSharedPaths(plan);
    return true;
}

CopiedSource SourceOf(const TransferPlan& plan, std::string TransferStep::*nameOf) {
    CopiedSource source;
    source.items.reserve(plan.steps.size());
    for (const TransferStep& step : plan.steps) {
        source.items.push_back({step.*nameOf, step.isFolder, step.parent});
    }
    return source;
}

}  // namespace depot
