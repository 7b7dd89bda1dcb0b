#pragma once

// Where the programs keep what they remember; the command and the windows share the files. They
// stand beside the program when that folder can be written and is no folder of installed programs
// (portable use), otherwise in the user's config and state folders, in VelloranPro/.

#include <filesystem>

namespace velloran {

struct ProgramPlaces {
    std::filesystem::path settings;       // VelloranPro.ini
    std::filesystem::path namedSettings;  // VelloranPro_Para.ini
    std::filesystem::path log;            // VelloranPro_log.txt
    /// Where the two settings files are read: as above or, as long as those are absent, the ones
    /// named for the program that stood beside it or in the user's folder before.
    std::filesystem::path settingsToRead, namedSettingsToRead;
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
