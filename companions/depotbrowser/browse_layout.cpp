#include "depotbrowser/browse_layout.h"

#include <algorithm>
#include <numeric>

namespace depot {
namespace {

// The tree's share of the width, in percent.
constexpr int kTreeShare = 30;

int CommandsWidth(const LayoutMetrics& m) {
    if (m.commandWidths.empty()) return 0;
    return std::accumulate(m.commandWidths.begin(), m.commandWidths.end(), 0) +
           m.gap * (static_cast<int>(m.commandWidths.size()) - 1);
}

// What stands above tree and list, and below them.
int TopHeight(const LayoutMetrics& m) {
    const int commands = m.commandWidths.empty() ? 0 : m.buttonHeight + m.gap;
    return m.margin + commands + m.fieldHeight + m.gap + m.labelHeight + m.gap / 2;
}

int KeptHeight(const LayoutMetrics& m) {
    return m.keptWidth > 0 ? m.gap + m.buttonHeight : 0;
}

int BottomHeight(const LayoutMetrics& m) {
    return KeptHeight(m) + m.gap + m.labelHeight + m.gap + m.messageHeight + m.gap +
           2 * (m.fieldHeight + m.gap) + m.buttonHeight + m.gap + m.labelHeight + m.gap;
}

void PlaceCommands(BrowseLayout& layout, const LayoutMetrics& m) {
    int x = m.margin;
    for (const int width : m.commandWidths) {
        layout.commands.push_back({x, m.margin, width, m.buttonHeight});
        x += width + m.gap;
    }
}

// The way to the folder, with the search at its end.
void PlaceBar(BrowseLayout& layout, int width, const LayoutMetrics& m) {
    const int y = m.margin + (m.commandWidths.empty() ? 0 : m.buttonHeight + m.gap);
    const int side = m.fieldHeight;
    layout.back = {m.margin, y, side, side};
    layout.forward = {layout.back.Right(), y, side, side};
    layout.up = {layout.forward.Right(), y, side, side};
    layout.search = {width - m.margin - m.searchWidth, y, m.searchWidth, side};
    layout.searchLabel = {layout.search.x - m.gap - m.searchLabelWidth,
                          y + (side - m.labelHeight) / 2, m.searchLabelWidth, m.labelHeight};
    const int pathX = layout.up.Right() + m.gap;
    layout.path = {pathX, y, std::max(0, layout.searchLabel.x - m.gap - pathX), side};
}

void PlacePanes(BrowseLayout& layout, int width, int height, const LayoutMetrics& m) {
    const int top = TopHeight(m);
    const int paneHeight = std::max(0, height - top - BottomHeight(m));
    const int inner = width - 2 * m.margin;
    const int treeWidth = std::max(m.treeMinimumWidth, inner * kTreeShare / 100);
    const int listX = m.margin + treeWidth + m.gap;
    const int listWidth = std::max(0, width - m.margin - listX);
    const int labelY = top - m.gap / 2 - m.labelHeight;
    layout.treeLabel = {m.margin, labelY, treeWidth, m.labelHeight};
    layout.tree = {m.margin, top, treeWidth, paneHeight};
    layout.listLabel = {listX, labelY, listWidth, m.labelHeight};
    layout.list = {listX, top, listWidth, paneHeight};
}

void PlaceMessage(BrowseLayout& layout, int width, int y, const LayoutMetrics& m) {
    const int inner = width - 2 * m.margin;
    const int stopX = width - m.margin - m.stopWidth;
    const int progressX = stopX - m.gap - m.progressWidth;
    // A button is higher than a line of text; the row is as high as two lines.
    const int buttonY = y + (m.messageHeight - m.buttonHeight) / 2;
    layout.message = {m.margin, y, inner, m.messageHeight};
    layout.messageIcon = {m.margin, y, m.iconSide, m.iconSide};
    const int behind = layout.messageIcon.Right() + m.gap;
    layout.messageBehindIcon = {behind, y, width - m.margin - behind, m.messageHeight};
    layout.messageWhileBusy = {m.margin, y, std::max(0, progressX - m.gap - m.margin),
                               m.messageHeight};
    layout.stop = {stopX, buttonY, m.stopWidth, m.buttonHeight};
    layout.progress = {progressX, y + (m.messageHeight - m.labelHeight) / 2, m.progressWidth,
                       m.labelHeight};
}

Box LabelBeside(const Box& field, const LayoutMetrics& m) {
    return {m.margin, field.y + (field.height - m.labelHeight) / 2, m.labelWidth, m.labelHeight};
}

void PlaceFields(BrowseLayout& layout, int width, int y, const LayoutMetrics& m) {
    const int x = m.margin + m.labelWidth + m.gap;
    const int fieldWidth = std::max(0, width - m.margin - x);
    layout.name = {x, y, fieldWidth, m.fieldHeight};
    layout.type = {x, y + m.fieldHeight + m.gap, fieldWidth, m.fieldHeight};
    layout.nameLabel = LabelBeside(layout.name, m);
    layout.typeLabel = LabelBeside(layout.type, m);
}

void PlaceButtons(BrowseLayout& layout, int width, int y, const LayoutMetrics& m) {
    layout.cancel = {width - m.margin - m.okWidth, y, m.okWidth, m.buttonHeight};
    layout.ok = {layout.cancel.x - m.gap - m.okWidth, y, m.okWidth, m.buttonHeight};
    if (m.hasHelp) layout.help = {m.margin, y, m.okWidth, m.buttonHeight};
}

}  // namespace

BrowseLayout ComputeLayout(int width, int height, const LayoutMetrics& metrics) {
    const Box least = MinimumSize(metrics);
    width = std::max(width, least.width);
    height = std::max(height, least.height);
    BrowseLayout layout;
    PlaceCommands(layout, metrics);
    PlaceBar(layout, width, metrics);
    PlacePanes(layout, width, height, metrics);
    layout.details = {metrics.margin, layout.list.Bottom() + metrics.gap,
                      width - 2 * metrics.margin, metrics.labelHeight};
    layout.kept = {metrics.margin, layout.details.Bottom() + metrics.gap, metrics.keptWidth,
                   metrics.buttonHeight};
    const int messageY = layout.details.Bottom() + KeptHeight(metrics) + metrics.gap;
    PlaceMessage(layout, width, messageY, metrics);
    PlaceFields(layout, width, messageY + metrics.messageHeight + metrics.gap, metrics);
    PlaceButtons(layout, width, layout.type.Bottom() + metrics.gap, metrics);
    const int statusY = layout.ok.Bottom() + metrics.gap;
    layout.grip = {width - metrics.gripSide, height - metrics.gripSide, metrics.gripSide,
                   metrics.gripSide};
    layout.status = {metrics.margin, statusY, layout.grip.x - metrics.gap - metrics.margin,
                     metrics.labelHeight};
    return layout;
}

Box MinimumSize(const LayoutMetrics& m) {
    const int buttons = (m.hasHelp ? 3 : 2) * m.okWidth + 2 * m.gap;
    const int busy = m.progressWidth + m.stopWidth + 2 * m.gap + m.treeMinimumWidth;
    const int panes = m.treeMinimumWidth * 3 + m.gap;
    const int fields = m.labelWidth + m.gap + m.okWidth * 2;
    const int bar =
        3 * m.fieldHeight + m.pathMinimumWidth + m.searchLabelWidth + m.searchWidth + 3 * m.gap;
    const int inner = std::max({CommandsWidth(m), buttons, busy, panes, fields, bar, m.keptWidth});
    return {0, 0, inner + 2 * m.margin, TopHeight(m) + m.listMinimumHeight + BottomHeight(m)};
}

}  // namespace depot
