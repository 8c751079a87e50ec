#pragma once

#include "VAST/Parser/YMRTagRules.h"

// The two objects behind YMRTagRules. For the code that makes and implements them.

class YMRExactRules final : public YMRTagRules {
 public:
  YMRTagProfile profile() const override { return YMRTagProfileExact; }

  Answer answerOf(const URLResponse& response) const override;
  std::size_t blanksBefore(std::span<const std::byte>) const override { return 0; }
  std::optional<NSURL> urlOf(std::string_view text) const override;
  NSURL withMacros(const NSURL& url, const VASTMacroValues&) const override { return url; }
  Allowance allowanceOf(const Element*) const override { return {}; }

  Split split(const VASTDocument& document) const override;
  std::size_t lostAdCount(const VASTDocument& document) const override { return document.namelessAdCount(); }
  const Element* adIn(const VASTDocument& document, std::string_view id, std::size_t position) const override;
  const Element* vastOf(const VASTDocument& document) const override;
  const Element* emptyVastOf(const VASTDocument&) const override { return nullptr; }

  bool isNamed(const Element& element, std::string_view name) const override;
  const Element* child(const Element* parent, std::string_view name) const override;
  const Element* contentOf(const Element* ad) const override;
  std::vector<const Element*> at(const Element* content, Path path) const override;
  std::vector<VASTNotRun> notRunOf(const std::vector<const Element*>&) const override { return {}; }
  bool knowsOffsets() const override { return false; }

  bool takes(const SKVASTMediaFile& file) const override;
  std::shared_ptr<SKVASTMediaFile> choose(Files files, std::int64_t area, std::optional<double>) const override;
  bool opensAnyContainer() const override { return false; }

  bool isReplacedAfter(SKVASTError failure) const override;
  bool exhaustsFallBacks() const override { return false; }
  std::optional<int> codeOf(const YMRVastModel&, SKVASTError) const override { return std::nullopt; }
  std::optional<int> codeOfFilm(const NSError&) const override { return std::nullopt; }
  std::string whyNoFilm(const YMRVastModel& model) const override;

  Moment impressionsAt() const override { return Moment::prepared; }
  Moment startAt() const override { return Moment::asked; }
};

class YMRBroadRules final : public YMRTagRules {
 public:
  YMRTagProfile profile() const override { return YMRTagProfileBroad; }

  Answer answerOf(const URLResponse& response) const override;
  std::size_t blanksBefore(std::span<const std::byte> document) const override;
  std::optional<NSURL> urlOf(std::string_view text) const override;
  NSURL withMacros(const NSURL& url, const VASTMacroValues& values) const override;
  Allowance allowanceOf(const Element* wrapper) const override;

  Split split(const VASTDocument& document) const override;
  std::size_t lostAdCount(const VASTDocument&) const override { return 0; }
  const Element* adIn(const VASTDocument& document, std::string_view id, std::size_t position) const override;
  const Element* vastOf(const VASTDocument& document) const override;
  const Element* emptyVastOf(const VASTDocument& document) const override;

  bool isNamed(const Element& element, std::string_view name) const override;
  const Element* child(const Element* parent, std::string_view name) const override;
  const Element* contentOf(const Element* ad) const override;
  std::vector<const Element*> at(const Element* content, Path path) const override;
  std::vector<VASTNotRun> notRunOf(const std::vector<const Element*>& chain) const override;
  bool knowsOffsets() const override { return true; }

  bool takes(const SKVASTMediaFile& file) const override;
  std::shared_ptr<SKVASTMediaFile> choose(Files files, std::int64_t area,
                                          std::optional<double> kilobits) const override;
  bool opensAnyContainer() const override { return true; }

  bool isReplacedAfter(SKVASTError) const override { return true; }
  bool exhaustsFallBacks() const override { return true; }
  std::optional<int> codeOf(const YMRVastModel& model, SKVASTError failure) const override;
  std::optional<int> codeOfFilm(const NSError& error) const override;
  std::string whyNoFilm(const YMRVastModel& model) const override;

  Moment impressionsAt() const override { return Moment::shown; }
  Moment startAt() const override { return Moment::shown; }

 private:
  bool isFilm(const Element& mediaFile) const;
  // Of several linear creatives the one that is played: the first, by `sequence`, that has a film.
  const Element* playedOf(std::vector<const Element*> creatives) const;
};
