// Tells, before the show is started, whether a window can open here. With a display that cannot be reached SDL falls
// into drivers that write letters into the terminal, or into one that shows nothing at all.
//   showdisplay     prints the name of SDL's driver for this display; or says in one line what is wrong, with status 1

#include <SDL.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
const unsigned PATIENCE = 10; // seconds for a display far away

std::string variable(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

// Does SDL open a display with this driver? A process of its own finds out: one that hangs is ended by its alarm, and
// what the libraries print is not for the user.
bool opens(const char* driver)
{
    const pid_t child = fork();
    if (child == 0)
    {
        alarm(PATIENCE);
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        setenv("SDL_VIDEODRIVER", driver, 1);
        _exit(SDL_Init(SDL_INIT_VIDEO) == 0 ? 0 : 1);
    }
    int status = 1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

// The driver that opens a window here, empty for none.
std::string findDriver(const std::string& x, const std::string& wayland)
{
    // Whoever chooses a driver knows why.
    const std::string chosen = variable("SDL_VIDEODRIVER");
    if (!chosen.empty()) return chosen;
    if (!x.empty() && opens("x11")) return "x11";
    if (!wayland.empty() && opens("wayland")) return "wayland";
    return "";
}
} // namespace

int main()
{
    const std::string x = variable("DISPLAY");
    const std::string wayland = variable("WAYLAND_DISPLAY");
    const std::string driver = findDriver(x, wayland);
    if (!driver.empty())
    {
        std::puts(driver.c_str());
        return 0;
    }
    if (!x.empty())
        std::fprintf(stderr, "Error: The display '%s' (DISPLAY) cannot be reached.\n", x.c_str());
    else if (!wayland.empty())
        std::fprintf(stderr, "Error: The Wayland display '%s' cannot be used: SDL needs an X display (Xwayland).\n",
                     wayland.c_str());
    else
        std::fprintf(stderr, "Error: There is no display here: the show needs a graphical session.\n");
    return 1;
}
