// Where the controls of the browse dialog stand.
#pragma once

#include <vector>

namespace depot {

struct Box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int Right() const { return x + width; }
    int Bottom() const { return y + height; }
};

// Measures in pixels; they grow with the user's font and screen.
struct LayoutMetrics {
    int margin = 0;
    int gap = 0;
    int labelHeight = 0;
    int fieldHeight = 0;
    int buttonHeight = 0;
    int labelWidth = 0;              // of the labels left of the fields
    int okWidth = 0;                 // of Open or Save, Cancel and Help
    int stopWidth = 0;               //
    int progressWidth = 0;           //
    int messageHeight = 0;           //
    std::vector<int> commandWidths;  // empty without commands
    bool hasHelp = false;
    int iconSide = 0;  // of the sign before an error
    int gripSide = 0;
    int searchLabelWidth = 0;
    int searchWidth = 0;
    int pathMinimumWidth = 0;
    int listMinimumHeight = 0;
    int treeMinimumWidth = 0;
    int keptWidth = 0;  // of the line that counts what could not be stored; 0 without it
};

struct BrowseLayout {
    std::vector<Box> commands;
    Box back, forward, up, path;
    Box searchLabel, search;
    Box treeLabel, tree;
    Box listLabel, list, details, kept;
    Box message, messageIcon, messageBehindIcon, messageWhileBusy, progress, stop;
    Box nameLabel, name;
    Box typeLabel, type;
    Box help, ok, cancel;
    Box status, grip;
};

// Places the controls in a window of this size. Tree and list take what is left; nothing overlaps
// in a window of MinimumSize or larger.
BrowseLayout ComputeLayout(int width, int height, const LayoutMetrics& metrics);

// The smallest window in which all controls find room; its position is zero.
Box MinimumSize(const LayoutMetrics& metrics);

}  // namespace depot
