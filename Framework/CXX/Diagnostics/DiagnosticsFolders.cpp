#include "Framework/CXX/Diagnostics/DiagnosticsFolders.h"

#include "Framework/CXX/Diagnostics/PathText.h"

DiagnosticsFolders DiagnosticsFolders::ofRunFolder(const std::u16string& path) {
    const std::u16string word = diagnosticsFolderName;
    DiagnosticsFolders folders;
    folders.runFolder = path;
    const std::size_t occurrence = path.find(word);
    if (occurrence == std::u16string::npos)
        return folders;
    const std::size_t end = occurrence + word.size();
    folders.diagnosticsFolder = path.substr(0, end);
    folders.runName = path.substr(end + 1);
    std::size_t separator = folders.diagnosticsFolder.rfind(u'/');
    if (separator == std::u16string::npos)
        separator = folders.diagnosticsFolder.rfind(u'\\');
    if (separator == std::u16string::npos)
        return folders;
    folders.baseFolder = folders.diagnosticsFolder.substr(0, separator);
    folders.logFolder = Halden::joinPaths(path, u"logs");
    folders.tracesFolder = Halden::joinPaths(path, u"Traces");
    return folders;
}
