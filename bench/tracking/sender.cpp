// Requests <base>1 to <base>N as an ad's tracking does, and ends. Usage: bench_tracking_sender BASE N
#include <cstdlib>

#include "ads/core/SKVASTEventProcessor.h"
#include "platform/dispatch/PlainRunLoop.h"

int main(int, char** argv) {
  PlainRunLoop loop;
  const auto processor = std::make_shared<SKVASTEventProcessor>(SKVASTEventProcessor::TrackingEvents(),
                                                                std::weak_ptr<SKVASTViewControllerDelegate>());
  const std::string base = argv[1];
  for (int i = 1, count = std::atoi(argv[2]); i <= count; ++i) {
    processor->sendTrackingRequest(*NSURL::URLWithString(base + std::to_string(i)));
  }
}
