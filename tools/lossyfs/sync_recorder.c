// Preloaded into the program under test (LD_PRELOAD) with LOSSYFS_MOUNTS set to the lossyfs mount
// points, separated by ":". sync() and syncfs() never reach a FUSE file system, so before calling
// the real one this looks up the name .lossyfs-sync on the mounts it flushes: lossyfs takes that
// lookup for the flush. The program itself is not changed.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

// fd < 0: every mount; otherwise the mount that holds fd's file.
static void announce(int fd) {
    const char* mounts = getenv("LOSSYFS_MOUNTS");
    if (mounts == NULL) return;
    char where[4096] = "";
    if (fd >= 0) {
        char link[64];
        snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
        const ssize_t length = readlink(link, where, sizeof where - 1);
        where[length > 0 ? length : 0] = '\0';
    }
    for (const char* mount = mounts; *mount != '\0';) {
        const char* end = strchr(mount, ':');
        const size_t length = end != NULL ? (size_t)(end - mount) : strlen(mount);
        if (fd < 0 || (strncmp(where, mount, length) == 0 && (where[length] == '/' || where[length] == '\0'))) {
            char name[4096];
            struct stat ignored;
            snprintf(name, sizeof name, "%.*s/.lossyfs-sync", (int)length, mount);
            stat(name, &ignored);
        }
        if (end == NULL) break;
        mount = end + 1;
    }
}

void sync(void) {
    announce(-1);
    void (*real)(void) = (void (*)(void))dlsym(RTLD_NEXT, "sync");
    real();
}

int syncfs(int fd) {
    announce(fd);
    int (*real)(int) = (int (*)(int))dlsym(RTLD_NEXT, "syncfs");
    return real(fd);
}
