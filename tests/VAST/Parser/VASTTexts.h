#pragma once

#include <string>

// VAST documents in small pieces, for tests.
namespace vast {

inline std::string document(const std::string& ads, const std::string& version = "2.0") {
  return "<?xml version='1.0' encoding='UTF-8'?><VAST version='" + version + "'>" + ads + "</VAST>";
}

inline std::string mediaFile(const std::string& url, const std::string& attributes = "type='video/mp4'") {
  return "<MediaFile " + attributes + "><![CDATA[" + url + "]]></MediaFile>";
}

inline std::string linear(const std::string& mediaFiles, const std::string& trackings = "",
                          const std::string& clicks = "", const std::string& attributes = "") {
  return "<Creatives><Creative><Linear" + attributes + "><Duration>00:00:10</Duration><TrackingEvents>" + trackings +
         "</TrackingEvents>" + (clicks.empty() ? "" : "<VideoClicks>" + clicks + "</VideoClicks>") + "<MediaFiles>" +
         mediaFiles + "</MediaFiles></Linear></Creative></Creatives>";
}

inline std::string tracking(const std::string& event, const std::string& url) {
  return "<Tracking event='" + event + "'>" + url + "</Tracking>";
}

inline std::string inLine(const std::string& content, const std::string& attributes = "") {
  return "<Ad " + attributes + "><InLine><AdSystem>test</AdSystem>" + content + "</InLine></Ad>";
}

// An ad that can be played; `name` is its title and its file's.
inline std::string playable(const std::string& name, const std::string& attributes = "") {
  return inLine("<AdTitle>" + name + "</AdTitle>" + linear(mediaFile("http://media.test/" + name + ".mp4")),
                attributes);
}

inline std::string wrapper(const std::string& url, const std::string& attributes = "",
                           const std::string& content = "") {
  return "<Ad " + attributes + "><Wrapper><AdSystem>test</AdSystem><VASTAdTagURI><![CDATA[" + url +
         "]]></VASTAdTagURI>" + content + "</Wrapper></Ad>";
}

}  // namespace vast
