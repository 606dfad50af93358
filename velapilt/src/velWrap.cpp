// Decides where a long line is cut. Reading the pieces gives the same line again.
#include "velapilt/src/velWrap.h"

#include "velapilt/src/velSpace.h"
#include "velapilt/src/velapilt.h"

#include <cstring>
#include <new>

namespace {

/// The end of the piece that starts at `start` and has room for `room`
/// characters of the longer `line`.
std::size_t pieceEnd(std::string_view line, std::size_t start, std::size_t room)
{
    const std::size_t candidate = start + room;
    std::size_t end = candidate;
    while (end > start && velIsSpace(line[end])) {
        --end;
    }
    if (end == start) {
        return candidate; // nothing but white space
    }
    // Kept: a word that would end exactly at the edge moves to the next piece
    // too.
    while (end > start && !velIsSpace(line[end])) {
        --end;
    }
    if (velIsSpace(line[end])) {
        return end + 1; // the white space stays after its word
    }
    // Cuts inside a word, or after the first of several spaces. A single space at
    // the start of the next piece would be lost when the pieces are read.
    const bool losesBlank = velIsSpace(line[candidate]) && !velIsSpace(line[candidate - 1]);
    return losesBlank ? candidate - 1 : candidate;
}

void addPiece(velArray *lines, std::size_t indent, std::string_view text, bool continues)
{
    char *piece = lines->addUninitialised(indent + text.size() + (continues ? 1 : 0));
    std::memset(piece, ' ', indent);
    std::memcpy(piece + indent, text.data(), text.size());
    if (continues) {
        piece[indent + text.size()] = '\\';
    }
}

} // namespace

const char *velWrap(std::string_view line, std::int32_t width, velArray *lines)
{
    if (width != 0 && width < 3) {
        return "velWrapLine: requested line length too short";
    }
    const auto columns = static_cast<std::size_t>(width);
    if (width == 0 || line.size() <= columns) {
        addPiece(lines, 0, line, false);
        return nullptr;
    }
    std::size_t lead = 0;
    while (lead < line.size() && velIsSpace(line[lead])) {
        ++lead;
    }
    const std::size_t continuation = lead + 2 > columns / 4 ? 0 : lead + 2;
    const std::size_t limit = columns - continuation;

    std::size_t start = 0;
    std::size_t indent = 0;
    do {
        const std::size_t end = pieceEnd(line, start, columns - indent - 1);
        addPiece(lines, indent, line.substr(start, end - start), true);
        start = end;
        indent = continuation;
    } while (line.size() - start > limit);
    addPiece(lines, indent, line.substr(start), false);
    return nullptr;
}

const char *velWrapLine(const char *line, std::int32_t width, velArray *lines)
try {
    return velWrap(line, width, lines);
} catch (const std::bad_alloc &) {
    return "memory error";
}
