#include "platform/avfoundation/engine/Remarks.h"

#include <glib.h>

#include <mutex>
#include <set>

void remarkOnce(const std::string& text) {
  static std::mutex mutex;
  static auto* said = new std::set<std::string>;  // lasts as long as the threads that ask it
  {
    std::lock_guard lock(mutex);
    if (said->size() >= remarksLimit || !said->insert(text).second) return;
  }
  g_log("ymr", G_LOG_LEVEL_WARNING, "%s", text.c_str());
}
