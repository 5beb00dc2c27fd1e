#include "Services/CameraTestDriver/OutputFolder.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"

using Platform::blockingWait;

Platform::StorageFolder openOutputFolder(Console& console, const std::u16string& cameraName,
                                         const std::filesystem::path& executable) {
    std::u16string path = Halden::toUtf16(executable.native());
    if (executable.empty()) {
        // The text and the path differ, and people know them so.
        console.write("\nError getting the path to executable, defaulting output folder to C:\\test");
        path = u"C:\\";
    }
    const auto file = blockingWait(Platform::cameraPlatform()->GetFileFromPathAsync(path));
    const auto folder = blockingWait(file->GetParentAsync());
    return blockingWait(folder->CreateFolderAsync(cameraName + u"\\", Platform::CreationCollisionOption::OpenIfExists));
}
