// Tracking requests to a server on loopback against curl(1) with as many connections: whole processes, wall time.
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/HTTPServer.h"

namespace {

constexpr int requests = 5'000;
constexpr int connections = 6;
constexpr int rounds = 5;

struct Cost {
  double seconds = 0;
  double cpuSeconds = 0;
};

double childrensCPU() {
  rusage usage{};
  ::getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Ends the program when not every request arrived: a sender that drops some is no peer.
Cost measure(const std::string& command) {
  HTTPServer server;
  server.onOthers([](const HTTPServer::Request&) {
    HTTPServer::Reply pixel;
    pixel.body = "GIF89a";
    return pixel;
  });
  const double cpu = childrensCPU();
  const auto began = std::chrono::steady_clock::now();
  std::string whole = command;
  whole.replace(whole.find("BASE"), 4, server.url("/"));
  const int status = std::system(whole.c_str());
  Cost cost;
  cost.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  cost.cpuSeconds = childrensCPU() - cpu;
  if (status != 0 || server.log().size() != requests || server.connections() > connections) {
    std::fprintf(stderr, "%s: status %d, %zu of %d requests, %d connections\n", whole.c_str(), status,
                 server.log().size(), requests, server.connections());
    std::exit(1);
  }
  return cost;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void compare(const char* what, const std::vector<double>& own, const std::vector<double>& peer) {
  std::printf("%-12s own %.3f s, curl --parallel %.3f s, ratio %.2f\n", what, median(own), median(peer),
              median(own) / median(peer));
}

}  // namespace

int main() {
  const std::string count = std::to_string(requests);
  const std::string own = std::string(SENDER) + " BASE " + count;
  const std::string peer = "curl -q -s -S --no-progress-meter --parallel --parallel-max " +
                           std::to_string(connections) + " --output /dev/null 'BASE[1-" + count + "]'";
  std::vector<double> ownTime, peerTime, ownCPU, peerCPU;
  for (int round = 0; round < rounds; ++round) {
    const Cost first = measure(own), second = measure(peer);
    ownTime.push_back(first.seconds);
    ownCPU.push_back(first.cpuSeconds);
    peerTime.push_back(second.seconds);
    peerCPU.push_back(second.cpuSeconds);
  }
  std::printf("%d tracking requests over at most %d connections\n", requests, connections);
  compare("wall time", ownTime, peerTime);
  compare("CPU time", ownCPU, peerCPU);
}
