// What the help client shows on the screen of the program that uses it: a
// warning box and the wait cursor. Both also work without an application
// object. GUI thread only.
#pragma once

#include <string>

namespace velEditor {

/// A warning box without a parent; its text is plain text. Without an
/// application object the text goes to the error stream.
void showHelpWarning(const std::string &title, const std::string &text);

/// Shows the wait cursor as long as the object exists.
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
