// What the help client shows on the screen of the program that uses it: one
// kind of message box, and the wait cursor. Both do without an application
// object. GUI thread only.
#pragma once

#include <string>

namespace velEditor {

/// A warning box without a parent; its text is plain text. Without an
/// application object the text goes to the error stream.
void showHelpWarning(const std::string &title, const std::string &text);

/// The wait cursor while an object of this class lives.
class HelpWaitCursor
{
public:
    HelpWaitCursor();
    ~HelpWaitCursor();
    HelpWaitCursor(const HelpWaitCursor &) = delete;
    HelpWaitCursor &operator=(const HelpWaitCursor &) = delete;

private:
    bool shown_;
};

} // namespace velEditor
