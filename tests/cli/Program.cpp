#include "tests/cli/Program.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace scrivly::testing {

namespace {

std::vector<std::string> environmentWith(const RunOptions& options) {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const auto equals = text.find('=');
        if (equals != std::string::npos) {
            variables[text.substr(0, equals)] = text.substr(equals + 1);
        }
    }
    for (const auto& [name, value] : options.environment) {
        if (value) {
            variables[name] = *value;
        } else {
            variables.erase(name);
        }
    }
    std::vector<std::string> result;
    for (const auto& [name, value] : variables) {
        result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (auto& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

} // namespace

Outcome runProgram(const std::vector<std::string>& arguments, const RunOptions& options) {
    std::vector<std::string> argv{SCRIVLY_CLI_PATH};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    auto envp = environmentWith(options);

    int outPipe[2];
    int errPipe[2];
    if (::pipe(outPipe) != 0 || ::pipe(errPipe) != 0) {
        throw std::runtime_error("pipe failed");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", 0, 0);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
    for (int descriptor : {outPipe[0], outPipe[1], errPipe[0], errPipe[1]}) {
        posix_spawn_file_actions_addclose(&actions, descriptor);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGINT);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv.front().c_str(), &actions, &attributes,
                                    pointers(argv).data(), pointers(envp).data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    if (spawned != 0) {
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        throw std::runtime_error("posix_spawn failed");
    }

    Outcome outcome;
    bool interrupted = false;
    std::chrono::steady_clock::time_point interruptedAt;
    const auto interrupt = [&] {
        ::kill(pid, options.interruptSignal);
        interrupted = true;
        interruptedAt = std::chrono::steady_clock::now();
    };
    const auto interruptAt =
        options.interruptAfter
            ? std::optional(std::chrono::steady_clock::now() + *options.interruptAfter)
            : std::nullopt;
    pollfd descriptors[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    while (open > 0) {
        int timeout = -1;
        if (interruptAt && !interrupted) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(
                *interruptAt - std::chrono::steady_clock::now());
            timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
        }
        const int ready = ::poll(descriptors, 2, timeout);
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            break;
        }
        if (ready == 0) {
            interrupt();
            continue;
        }
        for (int i = 0; i < 2; ++i) {
            if (descriptors[i].fd < 0 || descriptors[i].revents == 0) {
                continue;
            }
            char buffer[65536];
            const ssize_t count = ::read(descriptors[i].fd, buffer, sizeof buffer);
            if (count <= 0) {
                ::close(descriptors[i].fd);
                descriptors[i].fd = -1;
                --open;
                continue;
            }
            (i == 0 ? outcome.out : outcome.err).append(buffer, static_cast<std::size_t>(count));
            if (i == 1 && options.interruptWhen && !interrupted &&
                options.interruptWhen(outcome.err)) {
                interrupt();
            }
        }
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (interrupted) {
        outcome.afterInterrupt = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - interruptedAt);
    }
    return outcome;
}

} // namespace scrivly::testing
