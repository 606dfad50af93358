// Where the viewer finds its files: in the folders that the environment names, or
// else in its build tree or installation.
#pragma once

#include <QIcon>
#include <QString>

namespace velHelp {

/// The folder with the pages; empty if there is none.
[[nodiscard]] QString helpFolder();

/// The icon of the program in all its sizes; null if there is none.
[[nodiscard]] QIcon programIcon();

} // namespace velHelp
