#include "Services/CameraHubWeb/PageRoutes.h"

#include "Services/CameraHubWeb/Api/FileAnswer.h"
#include "Services/CameraHubWeb/Http/Problems.h"
#include "Services/CameraHubWeb/Page/PageFiles.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace CameraHubWeb {
namespace {

FileAnswer answerOf(const PageFile& file) {
    FileAnswer answer;
    answer.bytes = std::make_shared<const std::vector<std::uint8_t>>(file.content.begin(), file.content.end());
    answer.contentType = file.contentType;
    answer.tag = file.etag.substr(1, file.etag.size() - 2); // without its quotation marks
    answer.cacheControl = "no-cache";                       // asked for again each time: after an upgrade it is another
    return answer;
}

} // namespace

void addPageRoutes(Router& router) {
    auto files = std::make_shared<std::map<std::string, FileAnswer, std::less<>>>();
    for (const PageFile& file : pageFiles())
        files->emplace(file.name, answerOf(file));
    const auto send = [files](const HttpExchange& exchange, std::string_view name) {
        const auto found = files->find(name);
        return found == files->end() ? problemResponse(Problems::notFound())
                                     : answerWithFile(exchange.request(), found->second);
    };
    const auto addFile = [&router, send](std::vector<std::string> path, const char* name) {
        router.add("GET", std::move(path),
                   [send, name](const auto& exchange, const auto&) { exchange->send(send(*exchange, name)); });
    };
    addFile({}, "index.html");
    addFile({"api", "openapi.yaml"}, "openapi.yaml");
    addFile({"favicon.ico"}, "icon.svg");
    router.add("GET", {"page", "*"},
               [send](const auto& exchange, const auto& values) { exchange->send(send(*exchange, values.at(0))); });
}

} // namespace CameraHubWeb
