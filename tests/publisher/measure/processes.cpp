#include "tests/publisher/measure/processes.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace quillo::measure {

child::child(std::vector<std::string> const& command, std::string const& log_file) : pid_(::fork())
{
    if (pid_ != 0)
        return;
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    int const log = ::open(log_file.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    ::dup2(log, STDERR_FILENO);
    std::vector<char*> arguments;
    for (auto const& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
}

child::child(std::function<void()> const& body) : pid_(::fork())
{
    if (pid_ != 0)
        return;
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    body();
    ::_exit(0);
}

child::~child()
{
    ::kill(pid_, SIGCONT);
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
}

void child::signal(int number) const { ::kill(pid_, number); }

double child::cpu_seconds() const
{
    std::ifstream stat{"/proc/" + std::to_string(pid_) + "/stat"};
    std::string text;
    std::getline(stat, text);
    std::istringstream fields{text.substr(text.rfind(')') + 2)};
    std::string skipped;
    for (int k = 0; k < 11; ++k)
        fields >> skipped;
    double user = 0, system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

double child::resident_mb() const
{
    std::ifstream statm{"/proc/" + std::to_string(pid_) + "/statm"};
    double total = 0, resident = 0;
    statm >> total >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

double own_cpu_seconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    auto const seconds = [](timeval t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace quillo::measure
