#include "commands.h"
#include "scenefile.h"

int runCopy(const Arguments& arguments)
{
    const SceneFile file(arguments.files[0]);
    tellLosses(file);
    writeSceneFile(file.manager, arguments.files[1]);
    return STATUS_FINE;
}
