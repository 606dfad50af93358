// The pages of the help, read once from a folder of Markdown files.
//
// The folder contains one folder per language ("en-us"). A page that a language
// does not have is taken from "en-us". The name of a page is the name of its file
// without ".md". A page may begin with a comment that says where it belongs:
//
//     <!-- chapter: Object types; order: 20; also: Boundaries, Walls -->
//
// A page is found by its name, its title (the first heading) and its other names
// ("also"), regardless of case and punctuation. A name from a request is only
// compared; it is never used as the name of a file.
#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace velHelp {

struct Topic
{
    QString name;
    QString title;
    QString chapter; ///< empty: not listed in the contents
    int order = 0;   ///< within the chapter
    QStringList also;
    QString text; ///< Markdown, without the comment
};

/// A page that a search has found.
struct Hit
{
    const Topic *topic = nullptr; ///< not owned
    QString excerpt; ///< the first line after the title with one of the words; may be empty
    int score = 0;
};

/// The form in which names are compared: lower case, words joined by '-'.
[[nodiscard]] QString normalized(const QString &text);

/// The text with all Markdown characters escaped.
[[nodiscard]] QString escaped(const QString &text);

class Topics
{
public:
    /// Reads the pages below `folder`; skips files that cannot be read.
    Topics(const QString &folder, const QString &language);

    /// All pages by chapter, order and title.
    [[nodiscard]] const QList<Topic> &all() const { return topics_; }

    /// The page with a name, null if there is none. Valid as long as this object.
    [[nodiscard]] const Topic *find(const QString &name) const;

    /// At most `count` pages with the most similar names, the most similar first.
    [[nodiscard]] QList<const Topic *> nearest(const QString &name, int count) const;

    /// The pages that contain every word of `text`, the best match first.
    [[nodiscard]] QList<Hit> search(const QString &text) const;

private:
    void read(const QString &folder);
    void index();

    QList<Topic> topics_;
    QHash<QString, qsizetype> byName_; ///< normalized names
};

} // namespace velHelp
