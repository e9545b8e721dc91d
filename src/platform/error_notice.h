// Telling the user of an error that nobody else would tell.
#pragma once

#include <string>

namespace depot {

// How errors are told. Called on whatever thread the error happened.
using ErrorNotice = void (*)(const std::string& text);

// Makes `notice` the way in which errors are told, for a program that shows them in a window of its
// own. With null, as at the beginning, each is a message box with the error icon and no owner.
// Called once, before any other thread uses the component.
void InstallErrorNotice(ErrorNotice notice);

void ShowErrorNotice(const std::string& text);

}  // namespace depot
