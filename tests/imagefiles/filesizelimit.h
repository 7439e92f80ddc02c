// A disk that is full: for its lifetime, no file of this process can grow beyond a few bytes.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace tessera {

class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t nBytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit then fails, as on a full disk
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit = {nBytes, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~CFileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_former); }
    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;

private:
    rlimit m_former = {};
};

}  // namespace tessera
