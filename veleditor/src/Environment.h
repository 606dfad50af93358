// Reads all environment variables of the editor. docs/environment.md explains them.
// The texts belong to the environment.
#pragma once

#include <string>

namespace velEditor::environment {

/// ZOT5ROOT: the folder that contains etc/icons/. If it is not set: null, with a line
/// on standard error.
[[nodiscard]] const char *rootFolder();

/// ZOTBUILDID: the name of the build. Null as for rootFolder().
[[nodiscard]] const char *buildName();

/// VELEDITOR_SHOW_LIBRARY: whether data of rule libraries is shown.
[[nodiscard]] bool showsLibrary();

/// ZOT5_VEL_EXPERT: whether items for experts are shown.
[[nodiscard]] bool showsExpertItems();

/// The folder of the user's settings: XDG_CONFIG_HOME, else .config in HOME; empty if
/// neither is an absolute path.
[[nodiscard]] std::string configHome();

} // namespace velEditor::environment
