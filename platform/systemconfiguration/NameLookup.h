#pragma once

#include <sys/socket.h>

#include <chrono>
#include <string>
#include <vector>

// The addresses of a host's name or numeric address, best first. Waits for the resolver at most for `bound`; empty when
// there are none by then. Any thread.
std::vector<sockaddr_storage> lookUpName(const std::string& name, std::chrono::milliseconds bound);
