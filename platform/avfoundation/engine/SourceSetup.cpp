#include "platform/avfoundation/engine/SourceSetup.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/foundation/NSString.h"

namespace {

// The engine's own patience is the measure. The source would open a silent connection again where it stopped, and fail
// where a server knows no ranges.
constexpr guint noTimeout = 0;

std::string environment(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value ? value : "";
}

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), lowercaseASCII);
  return text;
}

// True when `host` is `entry` or below it.
bool isWithin(std::string_view host, std::string_view entry) {
  if (entry.starts_with('.')) entry.remove_prefix(1);
  if (entry.empty() || !host.ends_with(entry)) return false;
  return host.size() == entry.size() || host[host.size() - entry.size() - 1] == '.';
}

bool isExempt(const std::string& host) {
  std::string list = environment("no_proxy");
  if (list.empty()) list = environment("NO_PROXY");
  for (std::size_t begin = 0; begin < list.size();) {
    const auto end = std::min(list.find_first_of(", \t", begin), list.size());
    const std::string entry = lower(list.substr(begin, end - begin));
    if (entry == "*" || isWithin(lower(host), entry)) return true;
    begin = end + 1;
  }
  return false;
}

}  // namespace

std::string proxyFromEnvironment(const NSURL& url) {
  if (isExempt(url.host())) return "";
  std::string proxy = environment(url.scheme() + "_proxy");
  // HTTP_PROXY in capitals can be set by whoever sends a request to a CGI program, so it does not count.
  if (proxy.empty() && url.scheme() == "https") proxy = environment("HTTPS_PROXY");
  if (proxy.empty()) proxy = environment("all_proxy");
  if (proxy.empty()) proxy = environment("ALL_PROXY");
  if (!proxy.empty() && proxy.find("://") == std::string::npos) proxy = "http://" + proxy;
  return proxy;
}

void setUpSource(GstElement* source, const NSURL& url) {
  if (factoryName(source) != "souphttpsrc") return;
  g_object_set(source, "user-agent", "YMRPlayer/" YMR_VERSION, "timeout", noTimeout, "iradio-mode", FALSE, "proxy",
               proxyFromEnvironment(url).c_str(), nullptr);
}
