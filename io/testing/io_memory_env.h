// A file system in memory, with a clock that only counts.
#pragma once

#include "io/Src/Main/io_env.h"

#include <map>
#include <set>
#include <string>

class io_memory_env : public io_env
{
public:
    std::unique_ptr<io_file> open(const char *name, io_open how) override;
    bool remove(const char *name) override;
    void sleep(int milliseconds) override;
    const char *variable(const char *name) override;
    void put_trace(std::string_view line) override { trace += line; }
    void put_error(std::string_view line) override { errors += line; }
    void break_into_debugger() override { debugger_breaks++; }

    bool exists(const std::string &name) const { return files.count(name) > 0; }

    /// The contents of a file; makes the file if it is missing.
    std::string &operator[](const std::string &name);

    std::map<std::string, std::shared_ptr<std::string>> files;
    std::set<std::string> read_only; ///< names whose opening for writing fails with EACCES
    bool no_new_files = false;       ///< as in a folder without write permission
    std::map<std::string, std::string> variables;
    std::string trace;
    std::string errors; ///< what the default routine printed
    int slept_ms = 0;
    int debugger_breaks = 0;

    /// Called by every sleep; plays what another process does meanwhile.
    void (*while_sleeping)(io_memory_env &) = nullptr;
};
