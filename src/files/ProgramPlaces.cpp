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

/// Folders that hold installed programs hold nothing that the programs write.
bool IsOfInstalledPrograms(const std::filesystem::path& folder) {
    const std::filesystem::path name = folder.filename();
    return name == "bin" || name == "sbin" || name == "games";
}

bool IsThere(const std::filesystem::path& file) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(file, ignored);
}

/// `place`, unless one of the files of before stands alone.
std::filesystem::path PlaceToRead(const std::filesystem::path& place,
                                  const std::filesystem::path& program, const UserFolders& user,
                                  const char* ending) {
    const std::filesystem::path before = program.stem() += ending;
    if (!IsThere(place))
        for (const std::filesystem::path& folder : {program.parent_path(), user.config})
            if (IsThere(folder / before))
                return folder / before;
    return place;
}

}  // namespace

UserFolders FindUserFolders() {
    return {FolderFromEnvironment("XDG_CONFIG_HOME", ".config") / kFolderName,
            FolderFromEnvironment("XDG_STATE_HOME", ".local/state") / kFolderName};
}

ProgramPlaces PlacesFor(const std::filesystem::path& program, const UserFolders& user) {
    const std::filesystem::path own = program.parent_path();
    const bool portable = !IsOfInstalledPrograms(own) && ::access(own.c_str(), W_OK | X_OK) == 0;
    ProgramPlaces places;
    places.settings = (portable ? own : user.config) / "VelloranPro.ini";
    places.namedSettings = (portable ? own : user.config) / "VelloranPro_Para.ini";
    places.log = (portable ? own : user.state) / "VelloranPro_log.txt";
    places.settingsToRead = PlaceToRead(places.settings, program, user, ".ini");
    places.namedSettingsToRead = PlaceToRead(places.namedSettings, program, user, "_Para.ini");
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
