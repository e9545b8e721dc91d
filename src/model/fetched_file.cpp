#include "model/fetched_file.h"

namespace depot {

std::uint32_t WriteFetchedFile(const FileBuffer& contents, const std::string& path,
                               ExistingFile existing, Flush flush) {
    const std::uint8_t* const bytes = contents.bytes.get();
    if (existing == ExistingFile::kIsReplaced && bytes != nullptr) {
        return ReplaceLocalFile(path, bytes, contents.length, flush) ? LDAP_SUCCESS
                                                                     : LDAP_LOCAL_ERROR;
    }
    switch (CreateLocalFile(path, bytes, contents.length, flush)) {
        case FileCreation::kDone:
            return LDAP_SUCCESS;
        case FileCreation::kExists:
            return bytes != nullptr ? LDAP_ALREADY_EXISTS : LDAP_NO_SUCH_ATTRIBUTE;
        default:
            return LDAP_LOCAL_ERROR;
    }
}

}  // namespace depot
