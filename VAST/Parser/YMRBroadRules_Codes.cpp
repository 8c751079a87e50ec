// The standard's codes of what fails, as exact as it is known.
#include <algorithm>
#include <array>
#include <string_view>

#include "VAST/Parser/YMRProfiles.h"
#include "VAST/Parser/YMRVastModel.h"
#include "platform/foundation/NSString.h"

namespace {

using Element = XML::Element;

namespace code {
constexpr int malformed = 100;
constexpr int notTheSchemas = 101;
constexpr int versionNotSupported = 102;
constexpr int unexpectedKind = 200;
constexpr int notLinear = 201;
constexpr int unexpectedLength = 202;
constexpr int wrapper = 300;
constexpr int wrapperNotReached = 301;
constexpr int tooManyWrappers = 302;
constexpr int nothingBehindWrappers = 303;
constexpr int linear = 400;
constexpr int filmNotFound = 401;
constexpr int filmTimedOut = 402;
constexpr int noFilmSupported = 403;
constexpr int filmNotDisplayed = 405;
constexpr int interactive = 409;
constexpr int undefined = 900;
constexpr int program = 901;
}  // namespace code

bool hasKnownVersion(const Element& vast) {
  const auto version = vast.attributes.find("version");
  if (version == vast.attributes.end()) return true;
  const auto number = intValue(version->second);
  return number >= 2 && number <= 4;
}

// Of what is not run, when a film of that kind is all that there is.
std::optional<int> codeOfInteractive(const YMRVastModel& model) {
  for (const auto& each : model.notRun()) {
    if (each.code == code::interactive || each.code == code::program) return each.code;
  }
  return std::nullopt;
}

int codeOfInLine(const YMRTagRules& rules, const YMRVastModel& model, const Element* inLine) {
  static constexpr std::array<std::string_view, 2> toCreatives{"Creatives", "Creative"};
  static constexpr std::array<std::string_view, 3> toLinear{"Creatives", "Creative", "Linear"};
  static constexpr std::array<std::string_view, 5> toFiles{"Creatives", "Creative", "Linear", "MediaFiles",
                                                           "MediaFile"};
  if (const auto interactive = codeOfInteractive(model)) return *interactive;
  if (!rules.at(inLine, toFiles).empty()) return code::filmNotFound;  // none whose address can be asked
  if (!rules.at(inLine, toLinear).empty()) return code::noFilmSupported;
  const auto creatives = rules.at(inLine, toCreatives);
  const auto hasAny = [&](std::string_view name) {
    return std::ranges::any_of(creatives, [&](const auto* each) { return rules.child(each, name) != nullptr; });
  };
  if (hasAny("NonLinearAds")) return code::notLinear;
  return hasAny("CompanionAds") ? code::unexpectedKind : code::nothingBehindWrappers;
}

// Of an ad whose documents came and led to no film.
int codeOfNoAd(const YMRTagRules& rules, const YMRVastModel& model) {
  if (model.vastDocumentArray().empty()) return code::nothingBehindWrappers;
  const VASTDocument& last = model.vastDocumentArray().back();
  const auto* vast = rules.vastOf(last);
  if (!vast) {
    const auto* root = last.root();
    return root && rules.isNamed(*root, "VideoAdServingTemplate") ? code::versionNotSupported : code::notTheSchemas;
  }
  const auto* ad = model.lastAd();
  if (!ad) return hasKnownVersion(*vast) ? code::nothingBehindWrappers : code::versionNotSupported;
  const auto* inLine = rules.child(ad, "InLine");
  if (inLine) return codeOfInLine(rules, model, inLine);
  const auto* wrapper = rules.child(ad, "Wrapper");
  if (!wrapper) return hasKnownVersion(*vast) ? code::notTheSchemas : code::versionNotSupported;
  const auto* target = rules.child(wrapper, "VASTAdTagURI");
  return target && target->text && !target->text->empty() ? code::nothingBehindWrappers : code::wrapper;
}

}  // namespace

std::optional<int> YMRBroadRules::codeOf(const YMRVastModel& model, SKVASTError failure) const {
  switch (failure) {
    case SKVASTErrorNoAd:
    case SKVASTErrorNoAdAfterWrappers:
      return codeOfNoAd(*this, model);
    case SKVASTErrorXMLParse:
      return code::malformed;
    case SKVASTErrorSchemaValidation:
      return code::notTheSchemas;
    case SKVASTErrorTooManyWrappers:
      return code::tooManyWrappers;
    case SKVASTErrorMediaFileNotCompatible:
      return codeOfInteractive(model).value_or(code::noFilmSupported);
    case SKVASTErrorNoInternet:
    case SKVASTErrorTimeout:
      return model.vastError() == failure && !model.vastDocumentArray().empty() ? code::wrapperNotReached
                                                                                : code::undefined;
    case SKVASTErrorPlayback:
      return code::linear;
    case SKVASTErrorVideoTooShort:
      return code::unexpectedLength;
    default:
      return code::undefined;
  }
}

std::optional<int> YMRBroadRules::codeOfFilm(const NSError& error) const {
  if (error.domain == AVFoundationErrorDomain) {
    switch (error.code) {
      case AVErrorNoDataReceived:
        return code::filmTimedOut;
      case AVErrorDecodeFailed:
      case AVErrorFileFormatNotRecognized:
      case AVErrorFileFailedToParse:
      case AVErrorDecoderNotFound:
        return code::filmNotDisplayed;
      default:
        return code::linear;
    }
  }
  if (error.domain != NSURLErrorDomain) return code::linear;
  return error.code == NSURLErrorTimedOut ? code::filmTimedOut : code::filmNotFound;
}

std::string YMRBroadRules::whyNoFilm(const YMRVastModel& model) const {
  if (model.vastDocumentArray().empty()) return "";
  switch (codeOfNoAd(*this, model)) {
    case code::notTheSchemas:
      return "no media file: the document, or its ad, is none of VAST's";
    case code::versionNotSupported:
      return "no media file: the document is of a version before 2 or after 4";
    case code::unexpectedKind:
      return "no media file: the ad has companions only";
    case code::notLinear:
      return "no media file: the ad is not linear";
    case code::wrapper:
      return "no media file: the wrapper leads nowhere";
    case code::filmNotFound:
      return "no media file: none has a URL that can be asked for";
    case code::noFilmSupported:
      return "no media file: the linear creative has none";
    case code::interactive:
      return "no media file: a SIMID creative is all there is";
    case code::program:
      return "no media file: a VPAID program is all there is";
    default: {
      const bool isStopped = child(model.lastAd(), "Wrapper") && !model.redirectUrl();
      return isStopped ? "no media file: no further wrapper is allowed" : "no media file: there is no ad";
    }
  }
}
