#include "repair/cue_rule.h"

namespace repair {

namespace {

using matroska::Block;

// Without video each cluster gets a point, so that a player can seek.
class CompatibleCueRule final : public CueRule {
  public:
    explicit CompatibleCueRule(const RecordingHead& head) : CueRule(head) {}

    [[nodiscard]] bool IsPoint(const Block& block) const override {
        return !HasCueTrack() || IsText(block.track) || (IsOfCueTrack(block) && block.keyframe);
    }
    [[nodiscard]] bool GoesOnBehind(const Block& /*block*/, bool isFirstCluster) const override {
        return isFirstCluster && HasCueTrack();
    }
};

// Without video the first sound of each cluster is a point.
class StrictCueRule final : public CueRule {
  public:
    explicit StrictCueRule(const RecordingHead& head) : CueRule(head) {}

    [[nodiscard]] bool IsPoint(const Block& block) const override {
        return IsText(block.track) || (IsOfCueTrack(block) && block.keyframe);
    }
    [[nodiscard]] bool GoesOnBehind(const Block& block, bool isFirstCluster) const override {
        return HasCueVideo() ? isFirstCluster : HasCueTrack() && !IsOfCueTrack(block);
    }
};

} // namespace

std::unique_ptr<CueRule> CueRule::Of(const RecordingHead& head) {
    if (head.profile == MuxProfile_Strict) {
        return std::make_unique<StrictCueRule>(head);
    }
    return std::make_unique<CompatibleCueRule>(head);
}

} // namespace repair
