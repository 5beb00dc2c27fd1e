#include "Services/CameraHubWeb/Page/PageFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace CameraHubWeb {
namespace {

using ::testing::IsNull;
using ::testing::MatchesRegex;

std::string contentOf(std::string_view name) {
    const PageFile* file = findPageFile(name);
    return file == nullptr ? std::string() : std::string(file->content.begin(), file->content.end());
}

TEST(PageFilesTest, AFileHasTheBytesOfItsSource) {
    int compared = 0;
    for (const auto& entry : std::filesystem::directory_iterator(PAGE_FOLDER)) {
        const std::set<std::string> kinds{".html", ".css", ".js", ".svg", ".webmanifest"};
        if (!kinds.contains(entry.path().extension()))
            continue;
        std::ifstream source(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(source), {});
        EXPECT_EQ(contentOf(entry.path().filename().string()), bytes) << entry.path();
        ++compared;
    }
    EXPECT_GT(compared, 10);
}

TEST(PageFilesTest, FilesAreFoundByTheirWholeNameOnly) {
    for (const PageFile& file : pageFiles())
        EXPECT_EQ(findPageFile(file.name), &file) << file.name;
    for (const char* name : {"", "index", "index.htm", "index.html ", "INDEX.HTML", "/index.html", "../openapi.yaml",
                             "zzz.js", "PageFiles.h"})
        EXPECT_THAT(findPageFile(name), IsNull()) << name;
}

TEST(PageFilesTest, TypesAreThoseThatBrowsersWantToSee) {
    EXPECT_EQ(findPageFile("index.html")->contentType, "text/html; charset=utf-8");
    EXPECT_EQ(findPageFile("style.css")->contentType, "text/css; charset=utf-8");
    EXPECT_EQ(findPageFile("page.js")->contentType, "text/javascript; charset=utf-8");
    EXPECT_EQ(findPageFile("icon.svg")->contentType, "image/svg+xml");
    EXPECT_EQ(findPageFile("manifest.webmanifest")->contentType, "application/manifest+json");
}

TEST(PageFilesTest, EachContentHasATagOfItsOwn) {
    std::set<std::string_view> tags;
    for (const PageFile& file : pageFiles()) {
        EXPECT_THAT(std::string(file.etag), MatchesRegex("\"[0-9a-f]+\"")) << file.name;
        EXPECT_EQ(file.etag.size(), 34U) << file.name;
        tags.insert(file.etag);
    }
    EXPECT_EQ(tags.size(), pageFiles().size());
}

TEST(PageFilesTest, EverythingThatThePageAsksForIsThere) {
    const std::regex reference(R"((?:/page/|from '\./)([A-Za-z0-9.-]+))");
    std::size_t found = 0;
    for (const PageFile& file : pageFiles()) {
        const std::string text = contentOf(file.name);
        for (std::sregex_iterator match(text.begin(), text.end(), reference), end; match != end; ++match, ++found)
            EXPECT_NE(findPageFile((*match)[1].str()), nullptr) << file.name << " asks for " << (*match)[1];
    }
    EXPECT_GT(found, 30U);
}

TEST(PageFilesTest, NothingComesFromElsewhere) {
    const std::regex elsewhere(R"((?:src|href|from|url\()\s*=?\s*["'(]?(?:https?:)?//)");
    for (const PageFile& file : pageFiles()) {
        const bool refers = file.name.ends_with(".html") || file.name.ends_with(".css") || file.name.ends_with(".js");
        EXPECT_FALSE(refers && std::regex_search(contentOf(file.name), elsewhere)) << file.name;
    }
}

} // namespace
} // namespace CameraHubWeb
