#include "ReaderEcho.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

ReaderEcho::ReaderEcho() : m_output(-1) {
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0)
        return;
    m_output = dup(STDOUT_FILENO);
    if (m_output >= 0)
        dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

ReaderEcho::~ReaderEcho() {
    if (m_output < 0)
        return;
    std::fflush(stdout);
    dup2(m_output, STDOUT_FILENO);
    close(m_output);
}
