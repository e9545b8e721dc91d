// What a server's schema says of its classes, as it is read from there.
#pragma once

#include <string>
#include <vector>

namespace depot::ctl {

// The descriptions of a schema, one text each.
struct SchemaTexts {
    std::vector<std::string> classes, attributes;
};

// Whether it is known that no entry of the class has the attribute: neither the class nor one that
// it is made from names it. False wherever a part of that is not to be seen.
bool LacksAttribute(const SchemaTexts& schema, const std::string& className,
                    const std::string& attribute);

}  // namespace depot::ctl
