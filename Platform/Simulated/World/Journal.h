#pragma once

#include "Platform/Interface/HresultError.h"
#include "Platform/Shared/FileDescriptor.h"

#include <json/json.h>

#include <filesystem>
#include <mutex>
#include <string>

namespace Platform::Simulated {

/// What the journal says of one platform call, whatever comes of it.
struct JournalCall {
    const char* name;
    std::u16string device = {}; // empty: none
    const char* control = nullptr;
    Json::Value arguments = {}; // a list; null: none
};

/// A text file with a JSON object a line for every platform call, written at once. Without a file it
/// drops everything. Any thread.
class Journal {
public:
    /// Goes on in that file, at its end; an empty path: nowhere. Raises, and stays where it is, if the file
    /// cannot be opened.
    void moveTo(const std::filesystem::path& file);

    /// An asynchronous call begins, or an event is delivered.
    void called(const JournalCall& call);
    /// An asynchronous call ends.
    void ended(const JournalCall& call, const Json::Value& result);
    void failed(const JournalCall& call, winrt::hresult error);
    /// A synchronous call ends.
    void returned(const JournalCall& call, const Json::Value& result);
    void raised(const JournalCall& call, winrt::hresult error);

private:
    void write(const JournalCall& call, const std::string& ending);

    std::mutex _mutex;
    Shared::FileDescriptor _file;
    std::filesystem::path _path;
};

/// A number as the journal has it: not-a-number and the infinities, which JSON lacks, as text.
Json::Value journalNumber(double value);

/// UTF-8.
Json::Value journalText(const std::u16string& text);

} // namespace Platform::Simulated
