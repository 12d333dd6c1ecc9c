// SPDX-License-Identifier: MIT
#include "batch/TemporaryNames.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

namespace host {
namespace {

constexpr char kPrefix[] = ".tavrix-";

// Held while temporary files come and go: the thread that ends the process finds all of them.
std::mutex mutex;
std::set<std::string> names;
unsigned counter = 0;

[[noreturn]] void EndBySignal(const sigset_t& signals) {
    int number = 0;
    while (sigwait(&signals, &number) != 0) {
    }
    mutex.lock();  // for good: nothing new appears
    for (const std::string& name : names) unlink(name.c_str());
    std::signal(number, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    raise(number);
    _exit(128 + number);
}

}  // namespace

void RemoveTemporariesOnSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&signals, number);
        }
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // threads inherit it
    try {
        std::thread([signals] { EndBySignal(signals); }).detach();
    } catch (const std::system_error&) {  // a signal then ends the process as it always does
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

TemporaryName::TemporaryName(const std::string& folder, const std::function<int(const char* name)>& make) {
    const std::lock_guard lock(mutex);
    do {
        name = (folder.empty() ? "" : folder + "/") + kPrefix + std::to_string(getpid()) + "-" +
               std::to_string(counter++);
        error = make(name.c_str());
    } while (error == EEXIST);
    if (error == 0) names.insert(name);
}

TemporaryName::~TemporaryName() {
    const std::lock_guard lock(mutex);
    if (names.erase(name) != 0) unlink(name.c_str());
}

int TemporaryName::RenameTo(const std::string& path) {
    const std::lock_guard lock(mutex);
    if (std::rename(name.c_str(), path.c_str()) != 0) return errno;
    names.erase(name);
    return 0;
}

bool TemporaryName::IsOne(const std::string& fileName) {
    return fileName.starts_with(kPrefix);
}

}  // namespace host
