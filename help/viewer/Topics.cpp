// Reads the pages, and finds them by name or by their words.
#include "help/viewer/Topics.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <numeric>
#include <tuple>
#include <vector>

namespace velHelp {

namespace {

constexpr qint64 largestPage = 4 << 20;
/// The count for a word in the title. No page repeats a word so often, so pages
/// with the word in their title come first.
constexpr int titleWeight = 10'000;
constexpr int excerptLength = 120;

const QString fallbackLanguage = QStringLiteral("en-us");

/// The names of the folders to search for pages of a language, the best first. If
/// `language` is not a language, only the fallback is left.
QStringList languageFolders(const QString &language)
{
    QString name = language.toLower();
    name.truncate(name.indexOf(u'.') < 0 ? name.size() : name.indexOf(u'.'));
    name.replace(u'_', u'-');
    static const QRegularExpression form(QStringLiteral("^[a-z]{2,8}(-[a-z0-9]{1,8})*$"));
    QStringList folders;
    if (form.match(name).hasMatch()) {
        folders << name << name.section(u'-', 0, 0);
    }
    folders << fallbackLanguage;
    folders.removeDuplicates();
    return folders;
}

void readFiling(const QString &comment, Topic &topic)
{
    for (const QString &field : comment.split(u';')) {
        const QString name = field.section(u':', 0, 0).trimmed();
        const QString value = field.section(u':', 1).trimmed();
        if (name == QLatin1String("chapter")) {
            topic.chapter = value;
        } else if (name == QLatin1String("order")) {
            topic.order = value.toInt();
        } else if (name == QLatin1String("also")) {
            for (const QString &other : value.split(u',', Qt::SkipEmptyParts)) {
                topic.also.append(other.trimmed());
            }
        }
    }
}

Topic parsePage(const QString &name, const QString &content)
{
    Topic topic;
    topic.name = name;
    topic.title = name;
    topic.text = content;
    static const QRegularExpression comment(QStringLiteral("\\A\\s*<!--(.*?)-->\\s*"),
                                            QRegularExpression::DotMatchesEverythingOption);
    if (const auto match = comment.match(content); match.hasMatch()) {
        readFiling(match.captured(1), topic);
        topic.text = content.mid(match.capturedEnd());
    }
    static const QRegularExpression heading(QStringLiteral("^# +(.*?) *$"),
                                            QRegularExpression::MultilineOption);
    if (const auto match = heading.match(topic.text); match.hasMatch()) {
        topic.title = match.captured(1);
    }
    return topic;
}

/// The number of single-character changes that turn one text into the other.
int editDistance(const QString &from, const QString &to)
{
    std::vector<int> row(static_cast<std::size_t>(to.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (qsizetype i = 0; i < from.size(); ++i) {
        int diagonal = row[0]++;
        for (qsizetype j = 0; j < to.size(); ++j) {
            const auto column = static_cast<std::size_t>(j);
            const int substituted = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[column + 1];
            row[column + 1] = std::min({substituted, row[column] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// How much two names differ. If one contains the other, the distance does not
/// depend on their lengths.
int distance(const QString &wanted, const QString &name)
{
    if (!wanted.isEmpty() && (name.contains(wanted) || wanted.contains(name))) {
        return 0;
    }
    return editDistance(wanted, name);
}

// The list shows the title above the excerpt, so the search starts after it.
QString excerpt(const QString &text, const QString &word)
{
    const qsizetype body = text.startsWith(u'#') ? text.indexOf(u'\n') : 0;
    const qsizetype at = body < 0 ? -1 : text.indexOf(word, body, Qt::CaseInsensitive);
    if (at < 0) {
        return {};
    }
    const qsizetype begin = text.lastIndexOf(u'\n', at) + 1;
    const qsizetype end = text.indexOf(u'\n', at);
    QString line = text.mid(begin, end < 0 ? -1 : end - begin);
    static const QRegularExpression markup(
        QStringLiteral("[`*|#\\\\]|\\]\\([^)]*\\)|\\[|^\\s*[-0-9.]+\\s"));
    line.remove(markup);
    line = line.simplified();
    return line.size() > excerptLength ? line.left(excerptLength) + QChar(0x2026) : line;
}

} // namespace

QString normalized(const QString &text)
{
    QString name;
    bool gap = false;
    for (const QChar c : text.toLower()) {
        if (!c.isLetterOrNumber()) {
            gap = true;
            continue;
        }
        if (gap && !name.isEmpty()) {
            name += u'-';
        }
        gap = false;
        name += c;
    }
    return name;
}

QString escaped(const QString &text)
{
    QString plain;
    for (const QChar c : text) {
        if (c.unicode() < 0x80 && (c.isPunct() || c.isSymbol())) {
            plain += u'\\';
        }
        plain += c;
    }
    return plain;
}

Topics::Topics(const QString &folder, const QString &language)
{
    for (const QString &name : languageFolders(language)) {
        read(folder + u'/' + name);
    }
    std::stable_sort(topics_.begin(), topics_.end(), [](const Topic &a, const Topic &b) {
        return std::tie(a.chapter, a.order, a.title) < std::tie(b.chapter, b.order, b.title);
    });
    index();
}

// Skips pages that a better language has already provided.
void Topics::read(const QString &folder)
{
    const QDir directory(folder);
    const QStringList files =
        directory.entryList({QStringLiteral("*.md")}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QString &name : files) {
        const QString page = name.chopped(3);
        const bool isKnown = std::any_of(topics_.begin(), topics_.end(),
                                         [&](const Topic &topic) { return topic.name == page; });
        QFile file(directory.filePath(name));
        if (!isKnown && file.size() <= largestPage && file.open(QIODevice::ReadOnly)) {
            topics_.append(parsePage(page, QString::fromUtf8(file.readAll())));
        }
    }
}

// If several pages have the same name, file names win over titles, and titles win
// over other names.
void Topics::index()
{
    const auto add = [this](const QString &name, qsizetype i) {
        const QString key = normalized(name);
        if (!key.isEmpty() && !byName_.contains(key)) {
            byName_.insert(key, i);
        }
    };
    for (qsizetype i = 0; i < topics_.size(); ++i) {
        add(topics_[i].name, i);
    }
    for (qsizetype i = 0; i < topics_.size(); ++i) {
        add(topics_[i].title, i);
    }
    for (qsizetype i = 0; i < topics_.size(); ++i) {
        for (const QString &other : topics_[i].also) {
            add(other, i);
        }
    }
}

const Topic *Topics::find(const QString &name) const
{
    const auto found = byName_.constFind(normalized(name));
    return found == byName_.constEnd() ? nullptr : &topics_[*found];
}

QList<const Topic *> Topics::nearest(const QString &name, int count) const
{
    const QString wanted = normalized(name).left(100);
    QList<std::tuple<int, QString, qsizetype>> ranking;
    for (auto entry = byName_.constBegin(); entry != byName_.constEnd(); ++entry) {
        ranking.append({distance(wanted, entry.key()), entry.key(), entry.value()});
    }
    std::sort(ranking.begin(), ranking.end());

    QList<const Topic *> found;
    for (const auto &[rank, key, i] : ranking) {
        if (found.size() < count && !found.contains(&topics_[i])) {
            found.append(&topics_[i]);
        }
    }
    return found;
}

QList<Hit> Topics::search(const QString &text) const
{
    const QStringList words = text.simplified().split(u' ', Qt::SkipEmptyParts);
    QList<Hit> hits;
    for (const Topic &topic : topics_) {
        Hit hit{&topic, QString(), 0};
        const bool hasAll = std::all_of(words.begin(), words.end(), [&](const QString &word) {
            const auto inTitle = topic.title.count(word, Qt::CaseInsensitive);
            const auto inText = topic.text.count(word, Qt::CaseInsensitive);
            hit.score += static_cast<int>(inTitle * titleWeight + inText);
            if (hit.excerpt.isEmpty()) {
                hit.excerpt = excerpt(topic.text, word);
            }
            return inTitle + inText > 0;
        });
        if (hasAll && !words.isEmpty()) {
            hits.append(hit);
        }
    }
    std::stable_sort(hits.begin(), hits.end(),
                     [](const Hit &a, const Hit &b) { return a.score > b.score; });
    return hits;
}

} // namespace velHelp
