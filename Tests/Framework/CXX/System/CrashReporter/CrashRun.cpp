#include "Tests/Framework/CXX/System/CrashReporter/CrashRun.h"

#include "Tests/Support/WaitUntil.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace CrashTest {

namespace {

[[noreturn]] void becomeCrashProgram(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
                                     int output) {
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    const int errors = open((folder / "errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    if (chdir(folder.c_str()) == 0)
        execv(pointers[0], pointers.data());
    _exit(126);
}

void waitUntilReady(int output) {
    char unused;
    EXPECT_EQ(read(output, &unused, 1), 1) << "CrashProgram ended before it was ready";
}

int waitForEnd(pid_t process) {
    int status = 0;
    const auto hasEnded = [&] { return waitpid(process, &status, WNOHANG) == process; };
    if (waitUntil(hasEnded) || waitUntil(hasEnded)) // the helper may take all the patience
        return status;
    ADD_FAILURE() << "CrashProgram hangs";
    kill(process, SIGKILL);
    waitpid(process, &status, 0);
    return status;
}

} // namespace

ScratchFolder::ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "crash-test-XXXXXX").string();
    _path = mkdtemp(pattern.data());
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    std::filesystem::remove_all(_path, error);
}

std::vector<std::filesystem::path> ScratchFolder::files(const std::string& extension) const {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(_path))
        if (entry.path().extension() == extension)
            found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

CrashRun runCrashProgram(const ScratchFolder& folder, std::vector<std::string> arguments, int interrupt) {
    arguments.insert(arguments.begin(), programFolder() + "/CrashProgram");
    // What the test asks for counts, as it stands behind these.
    arguments.insert(arguments.begin() + 3,
                     {"reportFolder=" + folder.path().string(),
                      "helperTimeLimit=" + std::to_string(std::chrono::milliseconds(patience).count())});
    int output[2];
    if (pipe2(output, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const auto start = std::chrono::steady_clock::now();
    const pid_t process = fork();
    if (process == 0)
        becomeCrashProgram(arguments, folder.path(), output[1]);
    close(output[1]);
    waitUntilReady(output[0]);
    if (interrupt != 0)
        kill(process, interrupt);
    CrashRun run{};
    run.process = process;
    run.status = waitForEnd(process);
    run.duration = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    close(output[0]);
    run.errorText = readFile(folder.path() / "errors");
    const auto records = folder.files(".txt");
    EXPECT_LE(records.size(), 1u);
    if (!records.empty()) {
        run.record = readFile(records.front());
        run.recordName = records.front().filename().string();
    }
    return run;
}

std::string programFolder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path().string(); }

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string section(const std::string& record, const std::string& heading) {
    const std::size_t begin = record.find("\n" + heading);
    if (begin == std::string::npos)
        return {};
    return record.substr(begin + 1, record.find("\n\n", begin) - begin);
}

} // namespace CrashTest
