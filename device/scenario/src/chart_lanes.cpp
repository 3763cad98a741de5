#include "chart_lanes.h"

#include <algorithm>
#include <map>
#include <optional>

namespace Tarvo::Emu {
namespace {
constexpr const char* SCENE_VOTER = "VOTER_SCENE";
constexpr const char* THERMAL_VOTER = "VOTER_THERMAL";

std::string Text(const TraceEvent& event, const char* field)
{
    const TraceValue* value = event.Find(field);
    return value == nullptr ? std::string() : ValueText(*value);
}

bool Status(const TraceEvent& event)
{
    const TraceValue* value = event.Find("status");
    const bool* flag = value == nullptr ? nullptr : std::get_if<bool>(value);
    return flag != nullptr && *flag;
}

// A lane being built: bars open under a key until closed.
class LaneState {
public:
    explicit LaneState(std::string label) { lane_.label = std::move(label); }

    void Open(const std::string& key, int64_t t, std::string text, size_t row = 0)
    {
        Close(key, t);
        open_[key] = lane_.bars.size();
        lane_.bars.push_back(ChartBar{t, t, std::move(text), row});
        lane_.rows = std::max(lane_.rows, row + 1);
    }
    void Close(const std::string& key, int64_t t)
    {
        if (auto it = open_.find(key); it != open_.end()) {
            lane_.bars[it->second].end = t;
            open_.erase(it);
        }
    }
    bool IsOpen(const std::string& key) const { return open_.count(key) != 0; }
    ChartLane Finish(int64_t endMs)
    {
        for (const auto& [key, index] : open_) {
            lane_.bars[index].end = std::max(endMs, lane_.bars[index].begin);
        }
        open_.clear();
        return std::move(lane_);
    }

private:
    ChartLane lane_;
    std::map<std::string, size_t> open_;
};

class LaneBuilder {
public:
    // The thermal lane is always shown, also when nothing voted.
    LaneBuilder() { VoterLane(THERMAL_VOTER); }

    void Add(const TraceEvent& event)
    {
        if (event.ev == "mox.package") {
            AddPackage(event);
        } else if (event.ev == "mox.refresh") {
            AddVote(event);
        } else if (event.ev == "mox.light") {
            if (Status(event)) {
                light_.Open("", event.t, "on");
            } else {
                light_.Close("", event.t);
            }
        } else if (event.ev == "game.fps") {
            const std::string key = Text(event, "bundle") + "/" + Text(event, "cb");
            if (gameIndex_.count(key) == 0) {
                gameIndex_[key] = games_.size();
                games_.emplace_back("game " + key);
            }
            games_[gameIndex_[key]].Open("", event.t, Text(event, "fps"));
        }
    }

    std::vector<ChartLane> Finish(int64_t endMs)
    {
        std::vector<ChartLane> lanes;
        lanes.push_back(foreground_.Finish(endMs));
        lanes.push_back(scene_.Finish(endMs));
        for (auto& lane : voters_) {
            lanes.push_back(lane.Finish(endMs));
        }
        lanes.push_back(light_.Finish(endMs));
        for (auto& lane : games_) {
            lanes.push_back(lane.Finish(endMs));
        }
        return lanes;
    }

private:
    void AddPackage(const TraceEvent& event)
    {
        foreground_.Close("", event.t);
        const TraceValue* value = event.Find("pkgs");
        const auto* pkgs = value == nullptr ? nullptr : std::get_if<std::vector<std::string>>(value);
        if (pkgs != nullptr && !pkgs->empty()) {
            foreground_.Open("", event.t, pkgs->front().substr(0, pkgs->front().find(':')));
        }
    }

    void AddVote(const TraceEvent& event)
    {
        const std::string voter = Text(event, "name");
        if (voter == SCENE_VOTER) {
            const std::string desc = Text(event, "desc");
            if (sceneRows_.count(desc) == 0) {
                const size_t row = sceneRows_.size();
                sceneRows_[desc] = row;
            }
            if (!Status(event)) {
                scene_.Close(desc, event.t);
            } else if (!scene_.IsOpen(desc)) {
                scene_.Open(desc, event.t, desc, sceneRows_[desc]);
            }
            return;
        }
        LaneState& lane = VoterLane(voter);
        if (Status(event)) {
            lane.Open("", event.t, "min=" + Text(event, "min") + " max=" + Text(event, "max"));
        } else {
            lane.Close("", event.t);
        }
    }

    LaneState& VoterLane(const std::string& voter)
    {
        if (voterIndex_.count(voter) == 0) {
            voterIndex_[voter] = voters_.size();
            voters_.emplace_back(voter == THERMAL_VOTER ? std::string("thermal and power votes") : "votes " + voter);
        }
        return voters_[voterIndex_[voter]];
    }

    LaneState foreground_{"foreground"};
    LaneState scene_{"scene votes"};
    LaneState light_{"light factor"};
    std::map<std::string, size_t> sceneRows_;
    std::vector<LaneState> voters_;
    std::map<std::string, size_t> voterIndex_;
    std::vector<LaneState> games_;
    std::map<std::string, size_t> gameIndex_;
};
}  // namespace

std::vector<ChartLane> ChartLanes::Build(const std::vector<TraceEvent>& events, int64_t endMs)
{
    LaneBuilder builder;
    for (const auto& event : events) {
        builder.Add(event);
    }
    return builder.Finish(endMs);
}

}  // namespace Tarvo::Emu
