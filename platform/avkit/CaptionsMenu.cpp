#include "platform/avkit/CaptionsMenu.h"

#include <QLocale>
#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/foundation/NSString.h"

namespace {

constexpr qsizetype nameLimit = 200;

// `tag` is `range`, or a narrower form of it.
bool isWithin(const std::string& tag, const std::string& range) {
  if (range.empty() || tag.size() < range.size()) return false;
  if (tag.size() > range.size() && tag[range.size()] != '-') return false;
  return std::equal(range.begin(), range.end(), tag.begin(),
                    [](char left, char right) { return lowercaseASCII(left) == lowercaseASCII(right); });
}

// An option that the media give no name is called by its language.
QString nameOf(const AVMediaSelectionOption& option) {
  const QString name = QString::fromStdString(option.displayName()).simplified().left(nameLimit);
  const QString tag = QString::fromStdString(option.extendedLanguageTag().value_or(std::string()));
  const QLocale locale(tag);
  if (name != tag || locale.language() == QLocale::C) return name;
  const QString language = QLocale::languageToString(locale.language());
  const qsizetype detail = tag.section(u'-', 1, 1).size();
  if (detail == 4) return QStringLiteral("%1 (%2)").arg(language, QLocale::scriptToString(locale.script()));
  if (detail == 2 || detail == 3) {
    return QStringLiteral("%1 (%2)").arg(language, QLocale::territoryToString(locale.territory()));
  }
  return language;
}

}  // namespace

CaptionsMenu::CaptionsMenu() = default;

void CaptionsMenu::setAllowedLanguages(Languages languages) {
  allowed_ = std::move(languages);
  read(item_);
}

bool CaptionsMenu::allows(const AVMediaSelectionOption& option) const {
  if (!allowed_) return true;
  const auto tag = option.extendedLanguageTag();
  return tag && std::any_of(allowed_->begin(), allowed_->end(),
                            [&](const std::string& range) { return isWithin(*tag, range); });
}

void CaptionsMenu::read(std::shared_ptr<AVPlayerItem> item) {
  item_ = std::move(item);
  group_ = item_ ? item_->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible) : nullptr;
  options_.clear();
  names_.clear();
  selected_ = -1;
  const auto selection = group_ ? item_->selectedMediaOptionInMediaSelectionGroup(group_) : nullptr;
  if (group_) {
    std::copy_if(group_->options().begin(), group_->options().end(), std::back_inserter(options_),
                 [this](const auto& option) { return allows(*option); });
  }
  // What is selected can always be switched off, allowed or not.
  if (!options_.empty() || selection) names_ << tr("Off");
  if (!selection) {
    selected_ = names_.empty() ? -1 : 0;
  } else {
    const auto found =
        std::find_if(options_.begin(), options_.end(), [&](const auto& option) { return *option == *selection; });
    if (found != options_.end()) selected_ = 1 + static_cast<int>(found - options_.begin());
  }
  for (const auto& option : options_) names_ << nameOf(*option);
  Q_EMIT changed();
}

std::optional<CaptionsMenu::Choice> CaptionsMenu::choose(int row) {
  if (row < 0 || row >= rows()) return std::nullopt;
  const Choice choice{row == 0 ? nullptr : options_[static_cast<std::size_t>(row - 1)], group_};
  if (choice.option) {
    const auto now = item_->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
    if (!now || !now->optionWithIdentifier(choice.option->identifier())) return std::nullopt;
  }
  item_->selectMediaOption(choice.option, choice.group);
  read(item_);
  return choice;
}
