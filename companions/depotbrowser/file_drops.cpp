#include "depotbrowser/file_drops.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "depotbrowser/column_text.h"
#include "depotbrowser/label_text.h"
#include "platform/wide_text.h"
#include "resource_ids.h"

namespace depot {
namespace {

std::wstring LastPart(const std::wstring& path) {
    const std::size_t end = path.find_last_not_of(L'\\');
    if (end == std::wstring::npos) return path;
    const std::size_t start = path.find_last_of(L'\\', end);
    return path.substr(start == std::wstring::npos ? 0 : start + 1);
}

// A name may hold what stands for the pattern in the text.
std::wstring OtherTypeText(const std::wstring& format, const std::wstring& name,
                           const std::wstring& pattern) {
    const std::size_t mark = std::min(format.find(L"%s"), format.size());
    return FillIn(format.substr(0, mark + 2), name) +
           FillIn(format.substr(std::min(mark + 2, format.size())), pattern);
}

}  // namespace

bool FileDrops::CanChange() const {
    return parts_.settings.OffersCommands() && parts_.navigator.IsLoaded() &&
           IsWindowEnabled(parts_.dialog) != 0;
}

void FileDrops::Store(const DroppedPaths& paths, const FolderRef& target) {
    Drop drop = {{paths.narrow, target, false, parts_.list.Pattern()}, {}, {}, {}};
    for (const std::u16string& path : paths.wide) {
        const std::wstring wide(path.begin(), path.end());
        // A path that the code page cannot hold would be another file's.
        if (const auto narrow = ExactAnsiFromWide(wide)) {
            drop.order.sources.push_back(*narrow);
        } else {
            drop.refused.push_back(parts_.texts.Text(IDS_BROWSE_DROP_LETTERS, LastPart(wide)));
        }
    }
    Examine(drop);
}

void FileDrops::Transfer(std::vector<std::string> paths, const FolderRef& from,
                         const FolderRef& target, bool moves) {
    Examine({{std::move(paths), target, moves, {}}, from, {}, {}});
}

void FileDrops::Examine(const Drop& drop) {
    if (!CanChange()) return;
    parts_.navigator.Run(
        drop.order.target.depot, IDS_BROWSE_WORKING,
        [order = drop.order](DepotSession& session) { return ExamineDrop(session, order); },
        [this, drop](const DropExamination& examination) { Ask(drop, examination); });
}

void FileDrops::Ask(Drop drop, const DropExamination& examination) {
    std::vector<DroppedItem> items, existing;
    for (const DroppedItem& item : examination.items) {
        switch (item.obstacle) {
            case DropObstacle::kNone:
                items.push_back(item);
                break;
            case DropObstacle::kFileExists:
                existing.push_back(item);
                break;
            default:
                Refuse(drop, item);
        }
    }
    if (!existing.empty()) {
        const int answer = AskToReplace(existing);
        if (answer != IDYES && answer != IDNO) return;
        if (answer == IDYES) std::move(existing.begin(), existing.end(), std::back_inserter(items));
    }
    if (!items.empty()) return Put(drop, items);
    if (!drop.refused.empty()) parts_.status.ShowError(Message(drop));
}

// The user may have opened another folder, whose loading is not to be given up.
void FileDrops::Put(const Drop& drop, const std::vector<DroppedItem>& items) {
    stop_ = std::make_shared<std::atomic<bool>>(false);
    auto work = [order = drop.order, items, stop = stop_](DepotSession& session) {
        return PutDropped(session, order, items, stop);
    };
    auto done = [this, drop](const DropOutcome& outcome) { Finish(drop, outcome); };
    const DepotRef& depot = drop.order.target.depot;
    if (!parts_.navigator.IsLoaded()) return parts_.navigator.RunQuietly(depot, work, done);
    parts_.navigator.Run(depot, IDS_BROWSE_WORKING, work, done);
}

void FileDrops::Finish(Drop drop, const DropOutcome& outcome) {
    std::string arrived;
    for (const DroppedItem& item : outcome.items) {
        if (item.obstacle != DropObstacle::kNone) {
            Refuse(drop, item);
        } else if (arrived.empty()) {
            arrived = item.name;
        }
    }
    LearnFolders(drop, outcome);
    ShowOutcome(drop, arrived);
}

void FileDrops::ShowOutcome(const Drop& drop, const std::string& arrived) {
    const std::optional<FolderRef> current = parts_.navigator.Current();
    const bool hasTarget = current == drop.order.target;
    if (hasTarget || (drop.order.moves && current == drop.from)) {
        return parts_.navigator.Reload(
            {hasTarget ? arrived : std::string(), Message(drop), {}, true});
    }
    if (!drop.refused.empty()) parts_.status.ShowError(Message(drop));
}

// The tree learns of folders that came or went where the list does not show them.
void FileDrops::LearnFolders(const Drop& drop, const DropOutcome& outcome) {
    const bool hasFolders = std::any_of(outcome.items.begin(), outcome.items.end(),
                                        [](const DroppedItem& item) { return item.isFolder; });
    if (!hasFolders) return;
    if (tree_.IsKnown(drop.order.target)) parts_.navigator.LoadFolders(drop.order.target);
    if (drop.order.moves && tree_.IsKnown(drop.from)) parts_.navigator.LoadFolders(drop.from);
}

void FileDrops::Stop() const {
    *stop_ = true;
}

void FileDrops::Refuse(Drop& drop, const DroppedItem& item) const {
    if (drop.refused.empty()) drop.reason = WideFromAnsi(item.reason);
    drop.refused.push_back(Words(drop, item));
}

std::wstring FileDrops::Words(const Drop& drop, const DroppedItem& item) const {
    const std::wstring name = WideFromAnsi(item.name);
    switch (item.obstacle) {
        case DropObstacle::kFileExists:
        case DropObstacle::kExists:
            return parts_.texts.Text(IDS_BROWSE_EXISTS, name);
        case DropObstacle::kInside:
            return parts_.texts.Text(IDS_BROWSE_DROP_INSIDE, name);
        case DropObstacle::kBadName:
            return parts_.texts.Text(IDS_BROWSE_BAD_NAME, name);
        case DropObstacle::kOtherType:
            return OtherTypeText(parts_.texts.Text(IDS_BROWSE_DROP_TYPE), name,
                                 WideFromAnsi(drop.order.pattern));
        default:
            return parts_.texts.Text(IDS_BROWSE_DROP_FAILED, name);
    }
}

std::wstring FileDrops::Message(const Drop& drop) const {
    if (drop.refused.empty()) return {};
    std::wstring message = drop.refused.front();
    if (drop.refused.size() > 1) {
        const std::wstring others = std::to_wstring(drop.refused.size() - 1);
        message += L" " + parts_.texts.Text(IDS_BROWSE_DROP_MORE, others);
    }
    return drop.reason.empty() ? message : message + L"\n" + drop.reason;
}

int FileDrops::AskToReplace(const std::vector<DroppedItem>& existing) const {
    const BrowseTexts& texts = parts_.texts;
    const std::wstring question =
        existing.size() == 1
            ? texts.Text(IDS_BROWSE_CONFIRM_OVERWRITE, WideFromAnsi(existing.front().name))
            : texts.Text(IDS_BROWSE_DROP_REPLACE, std::to_wstring(existing.size()));
    std::wstring title(static_cast<std::size_t>(GetWindowTextLengthW(parts_.dialog)) + 1, L'\0');
    GetWindowTextW(parts_.dialog, title.data(), static_cast<int>(title.size()));
    return MessageBoxW(parts_.dialog, question.c_str(), title.c_str(),
                       MB_YESNOCANCEL | MB_ICONWARNING | MB_DEFBUTTON2);
}

}  // namespace depot
