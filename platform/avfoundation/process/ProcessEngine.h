#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/avfoundation/engine/Remarks.h"
#include "platform/avfoundation/engine/SilenceWatch.h"
#include "platform/avfoundation/fetch/ByteFetcher.h"
#include "platform/avfoundation/hls/HLSFetcher.h"
#include "platform/avfoundation/process/CrashHistory.h"
#include "platform/avfoundation/process/HangWatch.h"
#include "platform/avfoundation/process/PlaylistLook.h"
#include "platform/avfoundation/process/ProcessLink.h"
#include "platform/avfoundation/process/SharedPosition.h"

// An engine in a process of its own: the host's end. What it knows of the media is a copy of what the process has told;
// the position is read from memory that both see; nothing here waits for the process.
//
// What is fetched is fetched here, and every process of the item reads the same store. A process is started when the
// first bytes are here, since only one that plays a list of segments which the media library reads may reach the
// network itself. Of the lists that are read here (HLSFetcher) it gets the segments, and one that takes over gets them
// anew.
//
// When the process dies or hangs, another one goes on at the same place with all that was chosen, and whoever plays
// sees a stall. Media that do it again and again have failed (CrashHistory); an ad has after the first time.
class ProcessEngine final : public MediaEngine {
 public:
  // Makes a process; null when there is none to be had, and the host's own engine takes over. Main thread.
  using Launch = std::function<std::shared_ptr<MediaPeer>()>;

  // Begins to fetch the source's bytes. Main thread; called at once, and for each list that is read anew. None for a
  // file.
  using Fetch = std::function<std::shared_ptr<ByteFetcher>()>;

  ProcessEngine(const MediaSource& source, Launch launch, Fetch fetch = nullptr);
  ~ProcessEngine() override;

  void setEvents(Events events) override;
  void load(const CMTime& start) override;
  void setRate(double rate) override;
  void seek(const CMTime& time, SeekCompletion completion) override;
  CMTime position() const override;
  CMTime duration() const override;
  bool isLive() const override;
  std::vector<CMTimeRange> bufferedRanges() const override;
  bool isBufferEmpty() const override;
  bool isLikelyToKeepUp() const override;
  std::vector<MediaTrack> tracks() const override;
  void selectLegibleTrack(const std::optional<std::string>& identifier) override;
  void setMuted(bool muted) override;
  void setFrameSink(std::shared_ptr<VideoFrameSink> sink) override;

 private:
  // A seek whose end has not been told.
  struct Pending {
    std::uint64_t number;
    CMTime time;
    SeekCompletion completion;
  };

  void looked(const PlaylistLook::Result& result);
  void use(const PlaylistLook::Result& result);
  // Starts a process that begins where this one is to go on.
  void start();
  void send(const wire::ToProcess& message) const;
  void fallBack();
  void hear(const wire::ToHost& message);
  void hear(const wire::Hello&);
  void hear(const wire::Facts& facts);
  void hear(const wire::Ready&);
  void hear(const wire::Failed& failed);
  void hear(const wire::Buffering& buffering);
  void hear(const wire::Ended&);
  void hear(const wire::Caption& caption);
  void hear(const wire::Remark& remark) { remarkOnce(remark.text); }
  void hear(const wire::SeekDone& done);
  void died(const MediaPeer::Death& death);
  void recover();
  // The same; a list of segments is read anew before: a live one is another list by now. The old one does when it isn't
  // there.
  void startAnew();
  // How long it may take to the next picture.
  RunLoop::Duration silenceLimit() const;
  // Where it crashes: the edge of a live stream moves with time.
  std::int64_t crashPlace(std::int64_t place) const;
  // Ends the seeks up to `number`, of which only that one was `finished`.
  void finishSeeks(std::uint64_t number, bool finished);
  void fail(const NSError& error);
  void cut();
  // Of a process that has taken over: puts its time where this one's stood, or tells of the jump.
  void takeOver();
  std::int64_t place() const;
  std::int64_t reachable(const CMTime& time) const;
  template <class Function, class... Arguments>
  void tell(Function Events::*event, Arguments... arguments);
  template <class Function, class... Arguments>
  void report(Function Events::*event, Arguments... arguments);

  const MediaSource source_;
  const Launch launch_;
  const Fetch fetch_;
  std::shared_ptr<ByteFetcher> fetcher_, nextFetcher_;
  std::unique_ptr<PlaylistLook> look_;
  bool isPlaylist_ = false;                                // that the media library reads
  std::optional<std::pair<NSURL, std::string>> playlist_;  // that is read here, and where it came from
  std::shared_ptr<HLSFetcher> segments_;                   // of it
  bool comesOnce_ = false;                                 // a pipe: no other process can begin again
  SilenceWatch silence_;  // of a server, up to the first picture, whatever has to be started for it
  std::shared_ptr<const Events> events_ = std::make_shared<const Events>();
  MainHop hop_;  // for what is posted to itself
  std::shared_ptr<ProcessLink> link_;
  std::unique_ptr<SharedPosition> shared_;
  std::unique_ptr<MediaEngine> fallback_;  // in the host, when there is no process
  HangWatch hangs_;
  CrashHistory crashes_;
  bool hasCrashed_ = false;  // a process that had begun with the media
  int mute_ = 0;             // processes that went before their first word, in a row
  int idle_ = 0;             // those that went between that and their beginning with the media, in all

  // What was asked for.
  bool isLoaded_ = false;
  double rate_ = 0;
  bool isMuted_ = false;
  std::optional<std::string> legible_;
  std::shared_ptr<VideoFrameSink> sink_;
  std::uint64_t sinks_ = 0;
  std::uint64_t seeks_ = 0;
  std::deque<Pending> pending_;

  // What was told.
  bool isReady_ = false;       // once and for all
  bool isRecovering_ = false;  // the process that takes over is not ready yet
  bool hasEnded_ = false;
  bool hasFailed_ = false;
  wire::Facts facts_;
  wire::Buffering buffering_{.isEmpty = true, .isLikelyToKeepUp = false, .ranges = {}};
  std::optional<MediaCaption> caption_;
  std::int64_t shift_ = 0;          // of a live stream: how much later its time is here than in the process
  mutable std::int64_t floor_ = 0;  // the position never falls below what it was, but for a jump
  mutable std::uint64_t jumps_ = 0;
};
