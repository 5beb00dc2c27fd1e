#pragma once

#include "Tests/Support/WaitUntil.h"

#include <json/json.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// A scenario file in a folder of its own, which goes with it. Names its journal "journal.txt" beside it,
/// for scenarios that ask for one of that name.
class ScenarioFile {
public:
    ScenarioFile() {
        std::string name = (std::filesystem::temp_directory_path() / "camera-hub-scenario-XXXXXX").native();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("mkdtemp failed");
        _folder = name;
    }
    explicit ScenarioFile(const std::string& text) : ScenarioFile() { write(text); }
    ~ScenarioFile() {
        std::error_code ignored;
        std::filesystem::remove_all(_folder, ignored);
    }
    ScenarioFile(const ScenarioFile&) = delete;
    ScenarioFile& operator=(const ScenarioFile&) = delete;

    const std::filesystem::path& folder() const { return _folder; }
    std::filesystem::path path() const { return _folder / "scenario.json"; }
    std::filesystem::path journal() const { return _folder / "journal.txt"; }

    /// Writes in place.
    void write(const std::string& text) const { writeFile(path(), text); }

    /// Writes another file and renames it.
    void replace(const std::string& text) const {
        const std::filesystem::path fresh = _folder / "scenario.json.new";
        writeFile(fresh, text);
        std::filesystem::rename(fresh, path());
    }

    static void writeFile(const std::filesystem::path& file, const std::string& text) {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
    }

private:
    std::filesystem::path _folder;
};

/// One line of a journal.
struct JournalLine {
    Json::Value json; ///< the whole line
    std::string call;
    std::string device;  ///< empty: none
    std::string control; ///< empty: none

    bool hasEnded() const { return json["ended"].isBool() && json["ended"].asBool(); }
    bool hasResult() const { return json.isMember("result"); }
    bool hasError() const { return json.isMember("error"); }
};

/// Reads the journal that a platform is writing.
class JournalReader {
public:
    explicit JournalReader(std::filesystem::path file) : _file(std::move(file)) {}

    /// All lines that are complete; throws for one that is no JSON.
    std::vector<JournalLine> lines() const {
        std::ifstream file(_file, std::ios::binary);
        std::stringstream text;
        text << file.rdbuf();
        std::vector<JournalLine> lines;
        for (std::string line; std::getline(text, line) && !text.eof();)
            lines.push_back(parse(line));
        return lines;
    }

    /// Those lines of one call.
    std::vector<JournalLine> linesOf(const std::string& call) const {
        std::vector<JournalLine> found;
        for (JournalLine& line : lines())
            if (line.call == call)
                found.push_back(std::move(line));
        return found;
    }

    /// The names of the calls, in order; ends of asynchronous calls are left out.
    std::vector<std::string> calls() const {
        std::vector<std::string> names;
        for (const JournalLine& line : lines())
            if (!line.hasEnded())
                names.push_back(line.call);
        return names;
    }

    /// True as soon as the journal is as wanted; false when the patience is over.
    bool waitFor(const std::function<bool(const std::vector<JournalLine>&)>& isAsWanted) const {
        return waitUntil([&] { return isAsWanted(lines()); });
    }

    /// Waits until the call stands in the journal that many times, ends left out.
    bool waitForCall(const std::string& call, std::size_t times = 1) const {
        return waitUntil([&] {
            std::size_t count = 0;
            for (const std::string& name : calls())
                count += name == call ? 1 : 0;
            return count >= times;
        });
    }

private:
    static JournalLine parse(const std::string& text) {
        JournalLine line;
        std::istringstream stream(text);
        stream >> line.json;
        line.call = line.json.get("call", "").asString();
        line.device = line.json.get("device", "").asString();
        line.control = line.json.get("control", "").asString();
        return line;
    }

    const std::filesystem::path _file;
};
