// What a transfer of a tree has to do, known before it starts.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "directory/ldap_items.h"
#include "fileops/copied_source.h"

namespace depot {

// One file or folder on its way between an entry and a local path.
struct TransferStep {
    std::string dn;
    std::string localPath;
    bool isFolder = false;
    std::size_t parent = 0;   // the index of the step of the folder that holds it
    std::uint32_t depth = 0;  // levels below the first step
};

// The steps in the order in which they are done: a folder before what it holds.
struct TransferPlan {
    std::vector<TransferStep> steps;
    std::uint32_t files = 0;
    std::uint32_t unsafeNames = 0;  // entries, files or folders left out because of their names
    std::uint32_t sharedNames = 0;  // files and folders that would become one at the destination
    std::uint32_t links = 0;        // links to local folders, which are left out
};

// Lists a local folder's tree as it is to stand under `dn`; nothing when a folder cannot be listed.
std::optional<TransferPlan> PlanUpload(const CLDAPItems& directory, const std::string& folder,
                                       const std::string& dn);

// What the source of a plan is, with nothing of it copied yet: `nameOf` chooses the DN or the local
// path of each step.
CopiedSource SourceOf(const TransferPlan& plan, std::string TransferStep::*nameOf);

// Lists an entry's tree as it is to stand in `folder`. Returns false when a folder cannot be
// listed, or when the tree passes the bounds on trees. REQUIRES: the directory is connected.
bool PlanDownload(CLDAPItems& directory, const std::string& dn, const std::string& folder,
                  TransferPlan& plan);

// The same for a folder entry whose children are known already.
bool PlanDownload(CLDAPItems& directory, const std::string& dn, const LdapItemList& children,
                  const std::string& folder, TransferPlan& plan);

}  // namespace depot
