#include "platform/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace trevolt {
namespace {

/// The lowest descriptor that is free; a folder's where the system has no such device, for which
/// whatever is printed fails.
int OpenNowhere() {
    const int nowhere = open("/dev/null", O_RDWR);
    return nowhere >= 0 ? nowhere : open("/", O_RDONLY);
}

} // namespace

void OpenStandardDescriptors() {
    int opened = OpenNowhere();
    while (opened >= 0 && opened <= STDERR_FILENO)
        opened = OpenNowhere();
    if (opened >= 0)
        close(opened);
}

} // namespace trevolt
