#include "platform/directory_info_block.h"

namespace depot {
namespace {

constexpr char kBlockPrefix[] = "Quillon - Depot - LDAP Info - ";

}  // namespace

DirectoryInfo* DirectoryInfoBlock::Access() {
    // Kept: see the declaration.
    static_cast<void>(link_.handle.release());
    static_cast<void>(link_.view.release());
    OpenSharedBlock((kBlockPrefix + link_.key).c_str(), sizeof(DirectoryInfo), link_.handle,
                    link_.view);
    return static_cast<DirectoryInfo*>(link_.view.get());
}

}  // namespace depot
