#include "fsound.h"

const char* FMOD_ErrorString(int code)
{
    static const char* const texts[] = {
        "No errors",
        "Cannot call this command after FSOUND_Init.  Call FSOUND_Close first.",
        "This command failed because FSOUND_Init was not called",
        "Error initializing output device.",
        "The output device is already in use and cannot be reused.",
        "Playing the sound failed.",
        "Soundcard does not support the features needed for this soundsystem (16bit stereo output)",
        "Error setting cooperative level for hardware.",
        "Error creating hardware sound buffer.",
        "File not found",
        "Unknown file format",
        "Error loading file",
        "Not enough memory ",
        "The version number of this file format is not supported",
        "An invalid parameter was passed to this function",
        "Tried to use an EAX command on a non EAX enabled channel or output.",
        "Failed to allocate a new channel",
        "Recording not supported on this device",
        "Required Mediaplayer codec is not installed",
    };
    static_assert(sizeof texts / sizeof *texts == FMOD_ERR_MEDIAPLAYER + 1, "one text for each code");
    return code >= 0 && code <= FMOD_ERR_MEDIAPLAYER ? texts[code] : "Unknown error";
}
