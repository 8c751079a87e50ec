#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "VAST/Parser/VASTDocument.h"
#include "VAST/Parser/VASTMacros.h"
#include "VAST/SKVASTError.h"
#include "VAST/SKVASTMediaFile.h"
#include "VAST/YMRTagProfile.h"
#include "platform/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/URLLoader.h"
#include "xml/Element.h"

class YMRVastModel;

// What of an ad is not run here, and who wants to hear of it.
struct VASTNotRun {
  std::string what;           // for people
  int code = 0;               // of the standard, for an ad that does not play because of it
  std::vector<NSURL> tellAt;  // "verificationNotExecuted"
};

// The one place where the profiles differ: each question that they answer differently is a function here, and there is
// one object for each profile. All else is the same code for both. Without state; any thread.
//
// Elements are read only and belong to their documents; what takes an element takes null for one that is not there.
class YMR_API YMRTagRules {
 public:
  using Element = XML::Element;
  using Path = std::span<const std::string_view>;
  using Files = std::vector<std::shared_ptr<SKVASTMediaFile>>;

  static const YMRTagRules& of(YMRTagProfile profile);
  virtual YMRTagProfile profile() const = 0;

  // ---- What is fetched.

  enum class Answer { document, noAd, nothing };
  // What an answer of a server's is; one with an error is nothing.
  virtual Answer answerOf(const URLResponse& response) const = 0;
  // How many bytes at a document's beginning are not read: blanks before the XML declaration make it malformed.
  virtual std::size_t blanksBefore(std::span<const std::byte> document) const = 0;
  // The address that a text of a document is; nil when it is none.
  virtual std::optional<NSURL> urlOf(std::string_view text) const = 0;
  // The address to ask, of a wrapper, a film or a tracker, where the document gives `url`.
  virtual NSURL withMacros(const NSURL& url, const VASTMacroValues& values) const = 0;
  // What a wrapper lets come of the document that it leads to.
  struct Allowance {
    bool wrappers = true;    // it may lead on
    bool severalAds = true;  // it may hold a pod, and fall-backs
    bool fallBacks = true;   // a stand-alone ad beside the wrapper may take its place
  };
  virtual Allowance allowanceOf(const Element* wrapper) const = 0;

  // ---- The ads of a document.

  struct Child {
    const Element* ad;
    std::size_t position;  // among the document's ads
  };
  struct Split {
    bool isSplit = false;           // false: the document has one ad at most, which its model itself stands for
    std::vector<Child> pod;         // in the order of play
    std::vector<Child> standalone;  // fall-backs
  };
  virtual Split split(const VASTDocument& document) const = 0;
  // How many ads of a document nobody will ever see, since nothing could find them again.
  virtual std::size_t lostAdCount(const VASTDocument& document) const = 0;
  // The `Ad` of that id or at that position; null when there is none, or no single one.
  virtual const Element* adIn(const VASTDocument& document, std::string_view id, std::size_t position) const = 0;
  // The document element when it is a document of ads.
  virtual const Element* vastOf(const VASTDocument& document) const = 0;
  // What holds the error URLs of a document without any ad.
  virtual const Element* emptyVastOf(const VASTDocument& document) const = 0;

  // ---- An ad's elements.

  virtual bool isNamed(const Element& element, std::string_view name) const = 0;
  // The one child of that name that counts.
  virtual const Element* child(const Element* parent, std::string_view name) const = 0;
  // `InLine` or `Wrapper`.
  virtual const Element* contentOf(const Element* ad) const = 0;
  // The elements at the end of a path of names below an ad's content; of an inline ad's linear creatives only what is
  // played.
  virtual std::vector<const Element*> at(const Element* content, Path path) const = 0;
  // From the `InLine` or `Wrapper` of each document of a chain.
  virtual std::vector<VASTNotRun> notRunOf(const std::vector<const Element*>& chain) const = 0;
  // Whether `progress` and `skipoffset` are known.
  virtual bool knowsOffsets() const = 0;

  // ---- The film.

  virtual bool takes(const SKVASTMediaFile& file) const = 0;
  // One of some files that it takes. `area` is the screen's; `kilobits` what the connection has shown that it carries
  // in a second, nil when it has shown nothing yet.
  virtual std::shared_ptr<SKVASTMediaFile> choose(Files files, std::int64_t area,
                                                  std::optional<double> kilobits) const = 0;
  // Whether the film may be in any container that the machine plays.
  virtual bool opensAnyContainer() const = 0;

  // ---- What fails.

  // Whether a stand-alone ad takes the place of one that failed so before anything of it was seen.
  virtual bool isReplacedAfter(SKVASTError failure) const = 0;
  // Whether that goes on: with the next one when it fails too, and, when a document's are used up, with those beside
  // the wrapper that led to it.
  virtual bool exhaustsFallBacks() const = 0;
  // The standard's code for an ad that failed so, or for a film; nil where the profile leaves it at the error's own.
  virtual std::optional<int> codeOf(const YMRVastModel& model, SKVASTError failure) const = 0;
  virtual std::optional<int> codeOfFilm(const NSError& error) const = 0;
  // Why an ad whose documents came has no film, for people; empty when it has no document.
  virtual std::string whyNoFilm(const YMRVastModel& model) const = 0;

  // ---- When the trackers hear that an ad has begun.

  enum class Moment {
    prepared,  // its film is known
    asked,     // it is being asked for
    shown,     // its first picture is there
  };
  virtual Moment impressionsAt() const = 0;
  virtual Moment startAt() const = 0;

 protected:
  ~YMRTagRules() = default;
};
