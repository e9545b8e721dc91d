#include "depotctl/directory_words.h"

#include <algorithm>
#include <iterator>

namespace depot::ctl {
namespace {

struct Row {
    std::uint32_t code;
    const char* text;
    const char* advice;
};

constexpr Row kRows[] = {
    {1, "the server failed in the operation", "look into the server's log"},
    {2, "the server does not speak this protocol version", "set Version to 3"},
    {3, "the server's time limit was exceeded", "raise the server's time limit for users"},
    {4, "the server returns fewer entries than there are: its size limit",
     "raise the server's size limit for users above the number of entries of the largest folder"},
    {8, "the server wants a stronger way of logging on", "set Authentication or Security"},
    {13, "the server wants a secured connection", "set Security to 1 (StartTLS) or 2 (LDAPS)"},
    {16, "the attribute is not there", "load the schema into the server"},
    {17, "the server does not know an attribute of profile files",
     "load the schema into the server"},
    {19, "the server does not accept the value", "look into the server's log"},
    {21, "the server does not accept the value", "load the schema into the server"},
    {32, "there is no such entry", "check the path; the base must exist in the directory"},
    {34, "the name is not a valid distinguished name", "correct the path"},
    {48, "the server does not allow this way of logging on", "set Authentication"},
    {49, "the user name or the password is wrong", "correct Username and Password"},
    {50, "the rights do not suffice", "grant the user rights in the server's access rules"},
    {51, "the server is busy", "try again later"},
    {52, "the server is not available", "try again later"},
    {53, "the server is not willing to do this", "look into the server's log"},
    {64, "the name does not fit the entry", "choose another name"},
    {65, "the server does not accept an entry of this class",
     "load the schema into the server; its classes must allow these entries"},
    {66, "the entry has others below it", "remove those first"},
    {67, "the name of the entry cannot be changed this way", "choose another name"},
    {68, "there is an entry of that name already", "choose another name"},
    {81, "the server cannot be reached", "check Host and Port, and that the server runs"},
    {82, "a local file or folder could not be read or written", "check the local path"},
    {85, "the server did not answer in time", "check the network and ConnectTimeout"},
    {87, "the search was not understood", "check the class and attribute names"},
    {88, "the operation was cancelled", ""},
    {89, "the path cannot be used for this", "check both paths"},
    {91, "the server cannot be reached", "check Host and Port, and that the server runs"},
    {112, "the server's certificate is not accepted", "check the server's certificate"},
};

constexpr std::uint32_t kUnreachable[] = {51, 52, 81, 85, 91};

}  // namespace

DirectoryWords WordsFor(std::uint32_t code) {
    const auto row = std::find_if(std::begin(kRows), std::end(kRows),
                                  [code](const Row& known) { return known.code == code; });
    const std::string number = " (LDAP " + std::to_string(code) + ")";
    if (row == std::end(kRows)) return {"the directory refused it" + number, {}};
    return {row->text + number, row->advice};
}

bool MeansUnreachable(std::uint32_t code) {
    return std::find(std::begin(kUnreachable), std::end(kUnreachable), code) !=
           std::end(kUnreachable);
}

}  // namespace depot::ctl
