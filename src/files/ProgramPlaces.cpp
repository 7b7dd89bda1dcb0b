#include "files/ProgramPlaces.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>

namespace velloran {

namespace {

constexpr const char* kFolderName = "VelloranPro";

std::filesystem::path HomeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/')
        return home;
    if (const passwd* user = ::getpwuid(::getuid()); user != nullptr && user->pw_dir != nullptr)
        return user->pw_dir;
    return std::filesystem::path("/");
}

/// The variable's folder when it is an absolute path, as the base directory rules ask; else the
/// fallback below the home folder.
std::filesystem::path FolderFromEnvironment(const char* variable, const char* belowHome) {
    if (const char* value = std::getenv(variable); value != nullptr && value[0] == '/')
        return value;
    return HomeFolder() / belowHome;
}

}  // namespace

UserFolders FindUserFolders() {
    return {FolderFromEnvironment("XDG_CONFIG_HOME", ".config") / kFolderName,
            FolderFromEnvironment("XDG_STATE_HOME", ".local/state") / kFolderName};
}

ProgramPlaces PlacesFor(const std::filesystem::path& program, const UserFolders& user) {
    const std::filesystem::path own = program.parent_path();
    const bool portable = ::access(own.c_str(), W_OK | X_OK) == 0;
    const std::string name = program.stem().native();
    ProgramPlaces places;
    places.settings = (portable ? own : user.config) / (name + ".ini");
    places.namedSettings = (portable ? own : user.config) / (name + "_Para.ini");
    places.log = (portable ? own : user.state) / (name + "_log.txt");
    return places;
}

ProgramPlaces FindProgramPlaces() {
    std::error_code failure;
    std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (failure)
        program = "/velloran";  // no folder to write beside: the user's own are taken
    return PlacesFor(program, FindUserFolders());
}

bool MakeFolderOf(const std::filesystem::path& file) {
    const std::filesystem::path folder = file.parent_path();
    std::error_code failure;
    return folder.empty() || std::filesystem::is_directory(folder, failure) ||
           std::filesystem::create_directories(folder, failure);
}

}  // namespace velloran
