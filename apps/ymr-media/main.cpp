// Plays one source for a host: started by the player's library, at the other end of a socket, and of no use to anybody
// else. It reads what foreign servers send, so that whatever that does to it does not happen to the host.
#include <glib.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "apps/ymr-media/HostSocket.h"
#include "apps/ymr-media/MediaService.h"
#include "apps/ymr-media/PictureSender.h"
#include "apps/ymr-media/PictureSlots.h"
#include "apps/ymr-media/Readiness.h"
#include "apps/ymr-media/Walls.h"
#include "platform/avfoundation/bytes/ByteStoreReader.h"
#include "platform/avfoundation/bytes/PipeBytes.h"
#include "platform/avfoundation/engine/CaptionText.h"
#include "platform/dispatch/PlainRunLoop.h"

namespace {

// Hears the host for as long as it is there, on a thread of its own: pictures come back whatever the engine is at, and
// nothing keeps this process when the host has gone.
void hearHost(HostSocket& host, PictureSlots& slots, PictureSender& pictures, MediaService& service) {
  while (auto received = host.receive()) {
    if (const auto* picture = std::get_if<wire::GiveBack>(&received->message)) {
      pictures.giveBack(picture->picture);
    } else if (const auto* area = std::get_if<wire::Area>(&received->message)) {
      if (!received->descriptors.empty()) slots.add(*area, std::move(received->descriptors[0]));
    } else {
      RunLoop::main().post([&service, message = std::move(received->message)] { service.hear(message); });
    }
  }
  std::_Exit(0);
}

// The host's log is its own; this process has none.
void tellRemark(const char*, GLogLevelFlags, const char* text, gpointer host) {
  std::string line = tidyCaption(text);
  std::ranges::replace(line, '\n', ' ');
  if (!line.empty()) static_cast<HostSocket*>(host)->send(wire::Remark{std::move(line)});
}

}  // namespace

int main() {
  if (!HostSocket::isThere()) {
    std::fputs("ymr-media is started by the player's library\n", stderr);
    return 2;
  }
  std::signal(SIGPIPE, SIG_IGN);
  // What GLib would ask a desktop's services for.
  setenv("GSETTINGS_BACKEND", "memory", 1);
  setenv("GIO_USE_VFS", "local", 1);
  raiseLimits();
  getReady();

  HostSocket host;
  host.send(wire::Hello{});
  g_log_set_handler("ymr", G_LOG_LEVEL_WARNING, tellRemark, &host);
  auto first = host.receive();
  const auto* load = first ? std::get_if<wire::Load>(&first->message) : nullptr;
  if (!load || first->descriptors.size() != 1 + (load->hasFile ? 1u : 0u) + (load->hasBytes ? 3u : 0u)) return 0;
  auto& sent = first->descriptors;
  auto position = SharedPosition::map(std::move(sent[0]));
  Descriptor file;
  if (load->hasFile) file = std::move(sent[1]);
  std::shared_ptr<MediaBytes> bytes;
  if (load->hasBytes) bytes = ByteStoreReader::adopt({sent[1].release(), sent[2].release(), sent[3].release()});
  if (auto pipe = PipeBytes::make(Descriptor(dup(file.get())), load->url)) {
    bytes = std::move(pipe);
    file = {};
  }
  const MediaEngineSettings& settings = load->settings;
  raiseWalls(file ? std::vector{file.get()} : std::vector<int>(), load->isNetworkAllowed,
             settings.audio == MediaEngineSettings::Audio::automatic || !settings.soundDevice.empty());
  if (!position || (load->hasBytes && !bytes)) return 1;

  PlainRunLoop loop;
  const auto slots = std::make_shared<PictureSlots>([&host](std::uint64_t size) { host.send(wire::AreaWanted{size}); });
  PicturePages::setShared(slots);
  const auto pictures = std::make_shared<PictureSender>(host, slots);
  MediaService service(host, pictures, *load, std::move(position), std::move(file), std::move(bytes));
  std::thread([&] { hearHost(host, *slots, *pictures, service); }).detach();
  loop.run();
  return 0;
}
