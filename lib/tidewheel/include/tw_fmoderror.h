#pragma once

// The text of an error code of the sound library, "Unknown error" for a code it does not have. Never null.
const char* FMOD_ErrorString(int code);
