// Switches between the list and the field, and fills them.
#include "veleditor/src/ValueEntry.h"

#include "veleditor/src/RuleFields.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/Widgets.h"

#include <QComboBox>
#include <QTextEdit>
#include <QVBoxLayout>

namespace velEditor {

ValueEntry::ValueEntry(const QString &accessibleName, TextEncoding encoding, QWidget *parent)
    : QWidget(parent), encoding_(encoding), list_(makeList("Values", accessibleName, this)),
      field_(makeTextField("Value", accessibleName, this))
{
    list_->hide();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(list_, 0, Qt::AlignTop);
    layout->addWidget(field_);
    setFocusProxy(field_);
}

void ValueEntry::offer(const std::string &path)
{
    if (path == path_) {
        return; // keep the chosen value
    }
    path_ = path;
    allowed_ = {};
    QString proposal;
    if (!path.empty()) {
        static_cast<void>(velparser::getAllowedParamStrings(path.c_str(), &allowed_));
        proposal = ruleField(path, QLatin1String("Default"));
    }
    if (allowed_.empty()) {
        offerText(proposal);
    } else {
        offerList(proposal);
    }
    QWidget *shown = allowed_.empty() ? static_cast<QWidget *>(field_) : list_;
    QWidget *hidden = allowed_.empty() ? static_cast<QWidget *>(list_) : field_;
    hidden->hide(); // first, otherwise the dialog grows for both
    shown->show();
    setFocusProxy(shown);
}

void ValueEntry::offerList(const QString &proposal)
{
    list_->clear();
    for (const char *allowed : allowed_) {
        list_->addItem(fromBytes(allowed));
    }
    list_->setCurrentIndex(list_->findText(proposal, Qt::MatchExactly | Qt::MatchCaseSensitive));
}

void ValueEntry::offerText(const QString &proposal)
{
    if (plainText(*field_->document()) == proposal_) {
        field_->setPlainText(proposal);
        field_->selectAll(); // so that typing replaces the default
    }
    proposal_ = proposal;
}

EncodedText ValueEntry::value() const
{
    if (allowed_.empty()) {
        return encode(typedValue(*field_->document()), encoding_);
    }
    const int chosen = list_->currentIndex();
    return {chosen >= 0 ? allowed_[static_cast<std::size_t>(chosen)] : std::string(), {}};
}

} // namespace velEditor
