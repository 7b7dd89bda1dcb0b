#pragma once

// Where the program keeps what it remembers. Beside the program when that folder can be written
// (portable use), otherwise in the user's config and state folders, in VelloranPro/.

#include <filesystem>

namespace velloran {

struct ProgramPlaces {
    std::filesystem::path settings;       // <program>.ini
    std::filesystem::path namedSettings;  // <program>_Para.ini
    std::filesystem::path log;            // <program>_log.txt
};

/// The folders of a user, as the environment tells them.
struct UserFolders {
    std::filesystem::path config, state;
};
UserFolders FindUserFolders();

/// Places for a program file. Creates nothing.
ProgramPlaces PlacesFor(const std::filesystem::path& program, const UserFolders& user);

/// Places of the running program.
ProgramPlaces FindProgramPlaces();

/// Makes the folder of a place. False when it is missing and cannot be made.
bool MakeFolderOf(const std::filesystem::path& file);

}  // namespace velloran
