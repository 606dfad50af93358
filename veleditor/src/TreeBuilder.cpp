// Walks through the database and makes the rows.
#include "veleditor/src/TreeBuilder.h"

#include "common/error.h"
#include "velapilt/src/velComponentText.h"
#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/Environment.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTreeItem.h"

#include <string_view>
#include <utility>

namespace velEditor {

namespace {

void throwOn(const char *message, const char *step)
{
    if (message != nullptr) {
        throw error(std::string(step) + " : " + message);
    }
}

bool isKind(const velChildInfo &child, std::string_view kind)
{
    return child.className == kind;
}

bool isFlowPath(std::string_view path)
{
    return path.substr(0, 5) == "/FLOW" && path.find('/', 1) == std::string_view::npos;
}

QString rowLabel(const velChildInfo &child)
{
    return fromBytes(isKind(child, "Param") ? child.name : labelOf(velComponentOf(child)));
}

} // namespace

HiddenItems::HiddenItems()
    : showLibrary_(environment::showsLibrary()), showExpert_(environment::showsExpertItems())
{
}

// The queries return −1 on failure, which counts as yes like any number except 0.
bool HiddenItems::hide(const std::string &path) const
{
    if (!showLibrary_ && velparser::isVELLibrary(path.c_str()) != 0) {
        return true;
    }
    return !showExpert_ && velparser::isItemExpert(path.c_str()) != 0;
}

TreeBuilder::~TreeBuilder()
{
    for (std::size_t i = 0; i < levels_.size(); ++i) {
        static_cast<void>(velparser::popPathH());
    }
}

BuiltTree TreeBuilder::build()
{
    tree_.root = std::make_unique<VELTreeItem>(nullptr, nullptr, QStringLiteral("Root"),
                                               std::nullopt, std::string());
    enter(tree_.root.get(), 0);
    while (!levels_.empty()) {
        if (levels_.back().next < levels_.back().children.size()) {
            showNextChild();
        } else {
            leave();
        }
    }
    return std::move(tree_);
}

// `path_` is the item's path here.
void TreeBuilder::enter(VELTreeItem *item, std::size_t parentPathLength)
{
    Level level{item, nullptr, isFlowPath(path_), parentPathLength, {}, 0};
    if (level.isFlow) {
        tree_.flowItem = item;
    }
    throwOn(velparser::getChildList(path_.c_str(), &level.children, nullptr), "getChildList");
    throwOn(velparser::pushPathH(path_.c_str()), "pushPath");
    levels_.push_back(std::move(level));
}

void TreeBuilder::leave()
{
    const Level &level = levels_.back();
    if (level.isFlow) {
        tree_.lastFlowChild = level.lastChild;
    }
    path_.resize(level.pathLength);
    levels_.pop_back();
    throwOn(velparser::popPathH(), "popPath");
}

void TreeBuilder::showNextChild()
{
    Level &level = levels_.back();
    const velChildInfo &child = level.children[level.next++];

    // If there is a value at this path, the row is shown as a parameter, even if it is
    // an object with the same name as a parameter next to it. Users rely on that. For
    // a path without a value the query fails, which means the same.
    std::optional<std::string> value;
    static_cast<void>(velparser::getStringValue(child.name.c_str(), &value));

    const std::size_t length = path_.size();
    std::string component = value ? child.name : velComponentOf(child);
    if (path_ != "/") {
        path_ += '/';
    }
    path_ += component;
    if (hidden_.hide(path_)) {
        path_.resize(length);
        return;
    }
    VELTreeItem *item = makeItem(level, child, value, std::move(component));
    if (isKind(child, "Param")) {
        path_.resize(length);
    } else {
        enter(item, length);
    }
}

VELTreeItem *TreeBuilder::makeItem(Level &level, const velChildInfo &child,
                                   const std::optional<std::string> &value, std::string component)
{
    std::optional<QString> shown;
    if (value) {
        shown = fromBytes(*value);
    }
    auto *item = new VELTreeItem(level.item, level.lastChild, rowLabel(child), std::move(shown),
                                 std::move(component));
    level.lastChild = item;
    if (level.isFlow && isKind(child, "Singleton") && child.name == "EXPERT PARAMETERS") {
        tree_.expertItem = item;
        item->setInExpertSection(true);
    }
    if (isKind(child, "Param")) {
        item->setEditable(velparser::isParamEditable(path_.c_str()) != 0);
    }
    return item;
}

} // namespace velEditor
