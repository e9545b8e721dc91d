// Apart from reading, so that the component does not carry it.
#include "config/depot_values.h"
#include "platform/text.h"

namespace depot {
namespace {

std::string Shown(const std::string& text) {
    return text.empty() ? "none" : text;
}

std::string Shown(std::uint32_t number) {
    return NumberText(number);
}

}  // namespace

std::string DefaultOf(const DepotValue& value) {
    if (value.form.standard != nullptr) return value.form.standard;
    return std::visit([]<class Settings, class Member>(
                          Member Settings::*member) { return Shown(Settings{}.*member); },
                      value.member);
}

}  // namespace depot
