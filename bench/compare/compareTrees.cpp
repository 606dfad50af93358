// Compares the database with XML and JSON libraries and a hash map.
#include "bench/compare/comparisons.h"

#include "bench/compare/side.h"
#include "bench/velbench/measure.h"
#include "velapilt/src/velapilt.h"

#include <pugixml.hpp>
#include <rapidjson/document.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <unordered_map>

namespace velBench {

namespace {

constexpr std::size_t lookups = 1000000;
constexpr std::uint64_t largeTree = 1000000;

velHandlePtr newHandle()
{
    velHandlePtr handle(velCreateHandle());
    if (!handle)
        throw Failure("memory error");
    return handle;
}

std::string readWhole(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    std::string text(fileSize(file), '\0');
    if (!in.read(text.data(), static_cast<std::streamsize>(text.size())))
        throw Failure(file + ": could not be read");
    return text;
}

/// The files of one tree, and the last tree loaded from each.
class Comparison
{
public:
    Comparison(const std::string &directory, std::uint64_t parameters)
        : stem_(directory + "/tree-" + std::to_string(parameters)), parameters_(parameters)
    {
    }

    void run()
    {
        memory();
        load();
        save();
        lookup();
    }

private:
    void loadVel() { require(loadVELFile(handle_.get(), (stem_ + ".vel").c_str(), "vel")); }
    void loadXml()
    {
        const pugi::xml_parse_result result = xml_->load_file((stem_ + ".xml").c_str());
        if (!result)
            throw Failure(stem_ + ".xml: " + result.description());
    }
    void loadJson()
    {
        const std::string text = readWhole(stem_ + ".json");
        if (json_->Parse(text.data(), text.size()).HasParseError())
            throw Failure(stem_ + ".json: parse error");
    }

    void memory()
    {
        const std::int64_t before = residentBytes();
        handle_ = newHandle();
        loadVel();
        const std::int64_t kept = residentBytes() - before;
        const double each = static_cast<double>(kept) / static_cast<double>(parameters_);
        if (parameters_ >= largeTree)
            reportValues(named("memory of a parameter"), each, "limit", 200, "B", 1);
        else
            reportAlone(named("memory of a parameter"), each, "B");
    }

    void load()
    {
        Side vel{[&] { handle_ = newHandle(); }, [&] { loadVel(); }};
        Side xml{[&] { xml_ = std::make_unique<pugi::xml_document>(); }, [&] { loadXml(); }};
        Side json{[&] { json_ = std::make_unique<rapidjson::Document>(); }, [&] { loadJson(); }};
        compare({&vel, &xml, &json});
        json_.reset();
        report(named("load"), vel, "pugixml load_file", xml, parameters_ >= largeTree ? 2.0 : 1.5);
        report(named("load"), vel, "RapidJSON Parse", json, 0);
    }

    void save()
    {
        velStringList lines;
        std::string text;
        struct Writer : pugi::xml_writer
        {
            std::string *text = nullptr;
            void write(const void *data, size_t size) override
            {
                text->append(static_cast<const char *>(data), size);
            }
        } writer;
        writer.text = &text;
        Side vel{[&] { lines = velStringList(); },
                 [&] { require(velWrapText(handle_.get(), "/", velUsualWidth, &lines)); }};
        Side xml{[&] { text = std::string(); }, [&] { xml_->save(writer, "  "); }};
        compare({&vel, &xml});
        report(named("formatted save"), vel, "pugixml save", xml, 1.5);
    }

    void lookup()
    {
        const std::vector<std::string> paths = readLines(stem_ + ".paths");
        const std::vector<std::uint32_t> order = fixedOrder(paths.size(), lookups);
        xml_.reset();
        std::unordered_map<std::string, std::string> map;
        for (const std::string &path : paths) {
            const char *value = velFindValue(handle_.get(), path.c_str());
            if (!value)
                throw Failure(path + ": the tree has no such parameter");
            map.emplace(path, value);
        }
        std::size_t ourBytes = 0;
        std::size_t theirBytes = 0;
        Side vel{[&] { ourBytes = 0; },
                 [&] {
                     for (const std::uint32_t i : order)
                         ourBytes += std::strlen(velFindValue(handle_.get(), paths[i].c_str()));
                 }};
        Side standard{[&] { theirBytes = 0; },
                      [&] {
                          for (const std::uint32_t i : order)
                              theirBytes += std::strlen(map.find(paths[i])->second.c_str());
                      }};
        compare({&vel, &standard});
        if (ourBytes != theirBytes)
            throw Failure("the look-ups found different values");
        report(named("1,000,000 look-ups"), vel, "std::unordered_map", standard, 1.2);
    }

    [[nodiscard]] std::string named(const char *what) const
    {
        return std::string(what) + ", " + std::to_string(parameters_);
    }

    std::string stem_;
    std::uint64_t parameters_;
    velHandlePtr handle_;
    std::unique_ptr<pugi::xml_document> xml_;
    std::unique_ptr<rapidjson::Document> json_;
};

} // namespace

void compareTrees(const std::string &directory, std::uint64_t parameters)
{
    Comparison(directory, parameters).run();
}

} // namespace velBench
