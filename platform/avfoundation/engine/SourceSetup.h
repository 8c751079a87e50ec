#pragma once

#include <gst/gst.h>

#include <string>

#include "platform/foundation/NSURL.h"

// Makes the library's source behave as the process's other HTTP client does: its name, the environment's proxies, no
// certificate unchecked, and patience that leaves giving up to the engine. Any thread.
void setUpSource(GstElement* source, const NSURL& url);

// The proxy that the environment names for `url` (http_proxy, https_proxy, all_proxy, no_proxy, as curl reads them);
// empty for none.
std::string proxyFromEnvironment(const NSURL& url);
