// A client of the registered component, early- and late-bound.
#pragma once

#include <DepotIntr.h>

#include <memory>
#include <string>

namespace depot::bench {

struct Releaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
using Api = std::unique_ptr<IDepotIntrApi, Releaser>;

// Creates the component's object; ends the program with a message when it is not registered.
Api CreateApi();

// A BSTR that frees itself.
class Text {
public:
    Text() = default;
    explicit Text(const wchar_t* text) : text_(SysAllocString(text)) {}
    ~Text() { Clear(); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    BSTR* Address() { return &text_; }
    BSTR Get() const { return text_; }
    void Clear() {
        SysFreeString(text_);
        text_ = nullptr;
    }

private:
    BSTR text_ = nullptr;
};

// A program that can be measured: where the profile stands and how the depots are defined.
inline constexpr char kDepotsKey[] = "Software\\Quillon\\Farrow\\Depots";

}  // namespace depot::bench
