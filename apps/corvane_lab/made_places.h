#pragma once
#include <vector>

#include "corvane_lab/made_draft.h"

namespace corvane::lab {

// What the kinds of made worlds are like, each drawn into a draft.
void DrawFlat(MadeDraft& draft);
void DrawHouse(MadeDraft& draft);
void DrawBands(MadeDraft& draft);
void DrawBlock(MadeDraft& draft);
void DrawCarried(MadeDraft& draft);
void DrawOffice(MadeDraft& draft);
void DrawEnterprise(MadeDraft& draft);
void DrawLoaded(MadeDraft& draft);
void DrawCafe(MadeDraft& draft);
void DrawDying(MadeDraft& draft);
void DrawTrain(MadeDraft& draft);

// Walks from one of these rooms to another, with a rest in each, until the story is over.
void LiveIn(MadeDraft& draft, const std::vector<Point>& rooms, double fromMinutes,
            double toMinutes);

}  // namespace corvane::lab
