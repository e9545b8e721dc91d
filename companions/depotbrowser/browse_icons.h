// The small icons of depots, folders and files: the dialog's own, which are drawn for any size, and
// those that are configured for a depot or for profile files.
#pragma once

#include "platform/win32.h"
// After the Windows headers.
#include <commctrl.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace depot {

struct ImageListDestroyer {
    void operator()(HIMAGELIST list) const { ImageList_Destroy(list); }
};
using UniqueImageList = std::unique_ptr<std::remove_pointer_t<HIMAGELIST>, ImageListDestroyer>;

// An image list that grows as icons are asked for. Every index stays valid.
class BrowseIcons {
public:
    BrowseIcons();

    // Has the images in another size from here on. The list is another one then, with the same
    // indexes; the one before stays for as long as controls are given the new one.
    void Resize(int side);

    HIMAGELIST List() const { return list_.get(); }
    int Folder() const { return folder_; }
    int File() const { return file_; }

    // Returns the image of an icon location such as "C:\app\app.exe,2", in which environment
    // variables are expanded; the image of all other depots when there is none.
    int Depot(const std::string& location);

private:
    void Make(int side);
    int AddDepot(const std::string& location);
    int Add(HICON icon, int otherwise);

    UniqueImageList list_;
    UniqueImageList before_;
    std::vector<std::string> locations_;  // that were asked for, in their order
    int side_ = 0;
    int folder_ = 0;
    int file_ = 0;
    int depot_ = 0;
};

}  // namespace depot
