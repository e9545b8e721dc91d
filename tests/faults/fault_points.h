// The system calls that the fault layer lets fail, and what they hand out and take back.
#pragma once

// FAULT(kind, function, result of a failed call, last error), TAKES(... , what it hands out),
// RETURNS(function, what it takes back). Functions that need more than that have stand-ins of their
// own: fault_memory.cpp, fault_files.cpp, fault_objects.cpp.
#define DEPOT_FAULT_POINTS(FAULT, TAKES, RETURNS)                                    \
    TAKES(kRegistry, RegOpenKeyExA, ERROR_NOT_ENOUGH_MEMORY, 0, kKey)                \
    FAULT(kRegistry, RegQueryValueExA, ERROR_NOT_ENOUGH_MEMORY, 0)                   \
    FAULT(kRegistry, RegQueryValueExW, ERROR_NOT_ENOUGH_MEMORY, 0)                   \
    FAULT(kRegistry, RegEnumKeyExW, ERROR_NOT_ENOUGH_MEMORY, 0)                      \
    TAKES(kRegistry, RegOpenKeyExW, ERROR_NOT_ENOUGH_MEMORY, 0, kKey)                \
    TAKES(kRegistry, RegCreateKeyExW, ERROR_ACCESS_DENIED, 0, kKey)                  \
    FAULT(kRegistry, RegSetValueExW, ERROR_ACCESS_DENIED, 0)                         \
    FAULT(kRegistry, RegDeleteTreeW, ERROR_ACCESS_DENIED, 0)                         \
    FAULT(kRegistry, RegisterTypeLib, TYPE_E_REGISTRYACCESS, 0)                      \
    FAULT(kRegistry, UnRegisterTypeLib, TYPE_E_REGISTRYACCESS, 0)                    \
    RETURNS(RegCloseKey, kKey)                                                       \
    FAULT(kRegistry, RegNotifyChangeKeyValue, ERROR_NOT_ENOUGH_MEMORY, 0)            \
    FAULT(kRegistry, RegQueryInfoKeyA, ERROR_NOT_ENOUGH_MEMORY, 0)                   \
    TAKES(kFile, CreateFileA, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED, kHandle)    \
    FAULT(kFile, ReadFile, FALSE, ERROR_READ_FAULT)                                  \
    FAULT(kFile, CopyFileA, FALSE, ERROR_DISK_FULL)                                  \
    FAULT(kFile, DeleteFileA, FALSE, ERROR_SHARING_VIOLATION)                        \
    FAULT(kFile, MoveFileExA, FALSE, ERROR_SHARING_VIOLATION)                        \
    FAULT(kFile, ReplaceFileA, FALSE, ERROR_SHARING_VIOLATION)                       \
    FAULT(kFile, FlushFileBuffers, FALSE, ERROR_DISK_FULL)                           \
    FAULT(kFile, GetDiskFreeSpaceExA, FALSE, ERROR_ACCESS_DENIED)                    \
    FAULT(kFile, CreateDirectoryA, FALSE, ERROR_ACCESS_DENIED)                       \
    FAULT(kFile, RemoveDirectoryA, FALSE, ERROR_ACCESS_DENIED)                       \
    TAKES(kFile, FindFirstFileA, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED, kSearch) \
    FAULT(kFile, FindNextFileA, FALSE, ERROR_READ_FAULT)                             \
    TAKES(kFile, FindFirstFileW, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED, kSearch) \
    FAULT(kFile, FindNextFileW, FALSE, ERROR_READ_FAULT)                             \
    RETURNS(FindClose, kSearch)                                                      \
    FAULT(kFile, GetFileAttributesA, INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED)   \
    FAULT(kFile, GetFileAttributesExA, FALSE, ERROR_ACCESS_DENIED)                   \
    FAULT(kFile, GetTempFileNameA, 0, ERROR_ACCESS_DENIED)                           \
    FAULT(kFile, GetTempPathA, 0, ERROR_ACCESS_DENIED)                               \
    FAULT(kFile, GetFullPathNameA, 0, ERROR_ACCESS_DENIED)                           \
    FAULT(kFile, WritePrivateProfileStringA, FALSE, ERROR_DISK_FULL)                 \
    FAULT(kFile, SHFileOperationA, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED)         \
    FAULT(kFile, GetFileInformationByHandle, FALSE, ERROR_ACCESS_DENIED)             \
    FAULT(kFile, SetFileInformationByHandle, FALSE, ERROR_ACCESS_DENIED)             \
    FAULT(kFile, GetKernelObjectSecurity, FALSE, ERROR_ACCESS_DENIED)                \
    FAULT(kFile, GetFileSizeEx, FALSE, ERROR_READ_FAULT)                             \
    FAULT(kFile, GetShortPathNameA, 0, ERROR_ACCESS_DENIED)                          \
    FAULT(kFile, SetFileSecurityA, FALSE, ERROR_ACCESS_DENIED)                       \
    TAKES(kFile, SHGetSpecialFolderLocation, E_FAIL, ERROR_ACCESS_DENIED, kItemList) \
    FAULT(kFile, SHGetPathFromIDListA, FALSE, ERROR_ACCESS_DENIED)                   \
    RETURNS(ILFree, kItemList)                                                       \
    FAULT(kFile, LoadTypeLibEx, TYPE_E_CANTLOADLIBRARY, 0)                           \
    FAULT(kFile, LoadLibraryA, nullptr, ERROR_NOT_ENOUGH_MEMORY)                     \
    FAULT(kFile, LoadLibraryExA, nullptr, ERROR_NOT_ENOUGH_MEMORY)                   \
    TAKES(kFile, _lopen, HFILE_ERROR, ERROR_ACCESS_DENIED, kLegacyFile)              \
    TAKES(kFile, _lcreat, HFILE_ERROR, ERROR_ACCESS_DENIED, kLegacyFile)             \
    FAULT(kFile, _lread, static_cast<UINT>(HFILE_ERROR), ERROR_READ_FAULT)           \
    FAULT(kFile, _llseek, HFILE_ERROR, ERROR_READ_FAULT)                             \
    RETURNS(_lclose, kLegacyFile)                                                    \
    TAKES(kObject, CreateEventA, nullptr, ERROR_NO_SYSTEM_RESOURCES, kHandle)        \
    TAKES(kObject, OpenProcessToken, FALSE, ERROR_ACCESS_DENIED, kHandle)            \
    TAKES(kObject, OpenThreadToken, FALSE, ERROR_ACCESS_DENIED, kHandle)             \
    FAULT(kObject, GetTokenInformation, FALSE, ERROR_ACCESS_DENIED)                  \
    TAKES(kObject, ActivateActCtx, FALSE, ERROR_NOT_ENOUGH_MEMORY, kActivation)      \
    RETURNS(DeactivateActCtx, kActivation)                                           \
    FAULT(kMemory, SysAllocStringLen, nullptr, 0)                                    \
    FAULT(kMemory, SafeArrayGetElement, E_OUTOFMEMORY, 0)                            \
    FAULT(kMemory, VariantChangeType, E_OUTOFMEMORY, 0)                              \
    FAULT(kMemory, CoCreateInstance, E_OUTOFMEMORY, 0)                               \
    FAULT(kMemory, ExpandEnvironmentStringsA, 0, ERROR_NOT_ENOUGH_MEMORY)            \
    FAULT(kMemory, GetUserNameA, FALSE, ERROR_NOT_ENOUGH_MEMORY)                     \
    TAKES(kMemory, CopyIcon, nullptr, ERROR_NOT_ENOUGH_MEMORY, kIcon)                \
    RETURNS(DestroyIcon, kIcon)                                                      \
    FAULT(kMemory, VirtualAlloc, nullptr, ERROR_NOT_ENOUGH_MEMORY)

// The directory client's entry points are looked up by name.
#define DEPOT_DIRECTORY_FAULT_POINTS(FAULT, TAKES, RETURNS)                           \
    TAKES(kDirectory, ldap_initA, nullptr, 0, kConnection)                            \
    TAKES(kDirectory, ldap_sslinitA, nullptr, 0, kConnection)                         \
    FAULT(kDirectory, ldap_set_option, LDAP_NO_MEMORY, 0)                             \
    FAULT(kDirectory, ldap_connect, LDAP_SERVER_DOWN, 0)                              \
    FAULT(kDirectory, ldap_bind_sA, LDAP_SERVER_DOWN, 0)                              \
    FAULT(kDirectory, ldap_simple_bind_sA, LDAP_SERVER_DOWN, 0)                       \
    FAULT(kDirectory, ldap_search_sA, LDAP_SERVER_DOWN, 0)                            \
    FAULT(kDirectory, ldap_search_ext_sA, LDAP_SERVER_DOWN, 0)                        \
    FAULT(kDirectory, ldap_search_extA, LDAP_SERVER_DOWN, 0)                          \
    FAULT(kDirectory, ldap_add_extA, LDAP_SERVER_DOWN, 0)                             \
    FAULT(kDirectory, ldap_modify_extA, LDAP_SERVER_DOWN, 0)                          \
    FAULT(kDirectory, ldap_delete_extA, LDAP_SERVER_DOWN, 0)                          \
    FAULT(kDirectory, ldap_result, static_cast<ULONG>(-1), LDAP_SERVER_DOWN)          \
    FAULT(kDirectory, ldap_parse_resultA, LDAP_NO_MEMORY, 0)                          \
    TAKES(kDirectory, ldap_create_page_controlA, LDAP_NO_MEMORY, 0, kControl)         \
    RETURNS(ldap_control_freeA, kControl)                                             \
    FAULT(kDirectory, ldap_parse_page_controlA, LDAP_NO_MEMORY, 0)                    \
    FAULT(kDirectory, ldap_add_sA, LDAP_SERVER_DOWN, 0)                               \
    FAULT(kDirectory, ldap_modify_sA, LDAP_SERVER_DOWN, 0)                            \
    FAULT(kDirectory, ldap_modify_ext_sA, LDAP_SERVER_DOWN, 0)                        \
    FAULT(kDirectory, ldap_start_tls_sA, LDAP_SERVER_DOWN, 0)                         \
    FAULT(kDirectory, ldap_delete_sA, LDAP_SERVER_DOWN, 0)                            \
    FAULT(kDirectory, ldap_delete_ext_sA, LDAP_SERVER_DOWN, 0)                        \
    FAULT(kDirectory, ldap_rename_ext_sA, LDAP_SERVER_DOWN, 0)                        \
    FAULT(kDirectory, ldap_check_filterA, LDAP_NO_MEMORY, 0)                          \
    FAULT(kDirectory, ldap_first_entry, nullptr, LDAP_NO_MEMORY)                      \
    TAKES(kDirectory, ldap_first_attributeA, nullptr, LDAP_NO_MEMORY, kDirectoryText) \
    TAKES(kDirectory, ldap_next_attributeA, nullptr, LDAP_NO_MEMORY, kDirectoryText)  \
    TAKES(kDirectory, ldap_get_dnA, nullptr, LDAP_NO_MEMORY, kDirectoryText)          \
    TAKES(kDirectory, ldap_get_valuesA, nullptr, LDAP_NO_MEMORY, kValues)             \
    TAKES(kDirectory, ldap_get_values_lenA, nullptr, LDAP_NO_MEMORY, kValues)         \
    TAKES(kDirectory, ldap_explode_dnA, nullptr, LDAP_NO_MEMORY, kValues)             \
    RETURNS(ldap_unbind, kConnection)                                                 \
    RETURNS(ldap_unbind_s, kConnection)                                               \
    RETURNS(ldap_msgfree, kMessage)                                                   \
    RETURNS(ldap_memfreeA, kDirectoryText)                                            \
    RETURNS(ldap_value_freeA, kValues)                                                \
    RETURNS(ldap_value_free_len, kValues)
