// The pages of the help, read once from a folder of Markdown files.
//
// The folder holds one folder a language ("en-us"); a page that a language does
// not have is taken from "en-us". A page is named after its file without
// ".md". It may begin with a comment that files it:
//
//     <!-- chapter: Object types; order: 20; also: Boundaries, Walls -->
//
// and is found by its name, its title (the first heading) and its other names,
// all compared without regard to case and punctuation. Names given from outside
// are only ever compared, never used as the name of a file.
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

/// Where a search has found something.
struct Hit
{
    const Topic *topic = nullptr; ///< not owned
    QString excerpt; ///< the first line below the title with a word looked for; may be empty
    int score = 0;
};

/// A text as names are compared: lower case, words joined by '-'.
[[nodiscard]] QString normalized(const QString &text);

/// Text that stands in Markdown as it is.
[[nodiscard]] QString escaped(const QString &text);

class Topics
{
public:
    /// Reads the pages below `folder`; what cannot be read is left out.
    Topics(const QString &folder, const QString &language);

    /// All pages by chapter, order and title.
    [[nodiscard]] const QList<Topic> &all() const { return topics_; }

    /// The page with a name; null when there is none. Valid as long as this
    /// object.
    [[nodiscard]] const Topic *find(const QString &name) const;

    /// At most `count` pages with names most like this one, the nearest first.
    [[nodiscard]] QList<const Topic *> nearest(const QString &name, int count) const;

    /// The pages that hold every word of `text`, the best first.
    [[nodiscard]] QList<Hit> search(const QString &text) const;

private:
    void read(const QString &folder);
    void index();

    QList<Topic> topics_;
    QHash<QString, qsizetype> byName_; ///< normalized names
};

} // namespace velHelp
