// A file that belongs to one process for as long as this runs.
//
// The process holds a lock on the file (flock), which ends with the process, however
// that ends. A file whose lock is free was left by a process that was killed. Its
// name ends in the number of its process; where a file system has no locks, that
// number decides.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace veltext {

class OwnedFile
{
public:
    /// Makes a new file "FOLDER/NAME.PROCESS" that only the user can read, with the
    /// folder. Throws an Error.
    [[nodiscard]] static OwnedFile create(const std::string &folder, const std::string &name);

    /// Takes over a file that belongs to no process that runs; nothing if another has
    /// it, or if it cannot be opened.
    [[nodiscard]] static std::optional<OwnedFile> take(const std::string &path);

    OwnedFile(OwnedFile &&other) noexcept;
    OwnedFile &operator=(OwnedFile &&other) noexcept;
    /// Gives the file up; it stays where it is.
    ~OwnedFile();

    [[nodiscard]] const std::string &path() const { return path_; }

    /// Open for reading and writing.
    [[nodiscard]] int descriptor() const { return descriptor_; }

    /// Removes the file and gives it up.
    void remove();

private:
    OwnedFile(std::string path, int descriptor);
    void close();

    std::string path_;
    int descriptor_ = -1; ///< owned; −1 if the file was given up
};

/// The files "FOLDER/NAME.…", whoever they belong to, in the order of their names.
[[nodiscard]] std::vector<std::string> ownedFiles(const std::string &folder,
                                                  const std::string &name);

} // namespace veltext
