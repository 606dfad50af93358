// Joins the lines of a statement and finds its kind by the parser's rules.
#include "veltext/statement.h"

#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velSpace.h"

#include <algorithm>

namespace veltext {

namespace {

std::size_t findComment(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '#' && (i == 0 || text[i - 1] != '\\')) {
            return i;
        }
    }
    return text.size();
}

/// The trimmed text, with each run of white space as one space.
std::string singleBlanks(std::string_view text)
{
    std::string result;
    for (const char c : velTrim(text)) {
        if (!velIsSpace(c)) {
            result += c;
        } else if (result.back() != ' ') {
            result += ' ';
        }
    }
    return result;
}

/// Joins the lines. False if the text ends in a continued line.
bool joinLines(const SourceText &source, Positions positions, Statement *statement)
{
    std::string &text = statement->text;
    LineRange &lines = statement->lines;
    while (lines.first + lines.count < source.lineCount()) {
        const std::size_t number = lines.first + lines.count++;
        const std::string_view line = velTrim(source.parsedLine(number));
        text += line;
        if (positions == Positions::Keep) {
            const auto start = static_cast<std::size_t>(line.data() - source.bytes().data());
            for (std::size_t i = 0; i < line.size(); ++i) {
                statement->positions.push_back(start + i);
            }
        }
        if (!text.ends_with('\\')) {
            return true;
        }
        text.pop_back();
        statement->positions.resize(std::min(statement->positions.size(), text.size()));
    }
    return false;
}

std::string headerComponent(std::string_view text, std::size_t colon)
{
    const std::string type = singleBlanks(text.substr(0, colon));
    const std::string name = singleBlanks(text.substr(colon + 1));
    return name == type ? type : velJoinComponent(type, name);
}

/// Sets kind and component from the text before the comment.
void classify(std::string_view text, Statement *statement)
{
    text = velTrim(text);
    if (text.starts_with(replaceWord)) {
        text = velTrim(text.substr(replaceWord.size()));
    }
    if (text.empty()) {
        statement->kind = StatementKind::Nothing;
    } else if (text == "END") {
        statement->kind = StatementKind::End;
    } else if (text.front() == '>') {
        statement->kind = StatementKind::Action;
    } else if (const std::size_t equals = text.find('='); equals != std::string_view::npos) {
        statement->kind = StatementKind::Parameter;
        statement->component = singleBlanks(text.substr(0, equals));
    } else if (const std::size_t colon = text.find(':'); colon != std::string_view::npos) {
        statement->kind = StatementKind::Header;
        statement->component = headerComponent(text, colon);
    }
}

} // namespace

void readStatement(const SourceText &source, std::size_t firstLine, Positions positions,
                   Statement *statement)
{
    statement->lines = {firstLine, 0};
    statement->kind = StatementKind::Unfinished;
    statement->text.clear();
    statement->component.clear();
    statement->positions.clear();
    const bool finished = joinLines(source, positions, statement);
    statement->comment = findComment(statement->text);
    if (finished) {
        statement->kind = StatementKind::Nothing;
        classify(std::string_view(statement->text).substr(0, statement->comment), statement);
    }
}

std::string headerText(std::string_view type, std::string_view name)
{
    std::string text(type);
    text += ':';
    return name.empty() ? text : text.append(1, ' ').append(name);
}

std::size_t countComments(const SourceText &source)
{
    std::size_t count = 0;
    Statement statement;
    for (std::size_t line = 0; line < source.lineCount(); line += statement.lines.count) {
        readStatement(source, line, Positions::Skip, &statement);
        count += statement.comment < statement.text.size() ? 1 : 0;
    }
    return count;
}

} // namespace veltext
