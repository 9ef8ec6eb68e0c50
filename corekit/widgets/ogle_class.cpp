// The editor as a class: each callback of the table forwards to the virtual function of its name.
//
// Main thread.

#include "corekit/widgets/ogle.h"

struct OGLE::forward {
  static OGLE* self(OGLE_Rec* rec) { return static_cast<OGLE*>(rec->ref); }

  static void GetVisibleBoundsCB(OGLE_Rec* rec, OGLE_Bounds* bounds) {
    self(rec)->GetVisibleBounds(bounds);
  }
  static void GetLogicalBoundsCB(OGLE_Rec* rec, OGLE_Bounds* bounds) {
    self(rec)->GetLogicalBounds(bounds);
  }
  static void SetLogicalHeightCB(OGLE_Rec* rec, float height) {
    self(rec)->SetLogicalHeight(height);
  }
  static void ScrollToCB(OGLE_Rec* rec, float x, float y) { self(rec)->ScrollTo(x, y); }
  static void GetTextCB(OGLE_Rec* rec, const char** begin, const char** end) {
    self(rec)->GetText(begin, end);
  }
  static void ReplaceTextCB(OGLE_Rec* rec, int start, int end, const char* new_begin,
                            const char* new_end) {
    self(rec)->ReplaceText(start, end, new_begin, new_end);
  }
  static float GetLineHeightCB(OGLE_Rec* rec) { return self(rec)->GetLineHeight(); }
  static float MeasureStringCB(OGLE_Rec* rec, const char* begin, const char* end) {
    return self(rec)->MeasureString(begin, end);
  }
  static int FitStringFwdCB(OGLE_Rec* rec, const char* begin, const char* end, float width) {
    return self(rec)->FitStringFwd(begin, end, width);
  }
  static int FitStringRevCB(OGLE_Rec* rec, const char* begin, const char* end, float width) {
    return self(rec)->FitStringRev(begin, end, width);
  }
  static void DrawStringCB(OGLE_Rec* rec, const char* begin, const char* end, float x, float y) {
    self(rec)->DrawString(begin, end, x, y);
  }
  static void DrawSelectionCB(OGLE_Rec* rec, const OGLE_Bounds& bounds) {
    self(rec)->DrawSelection(bounds);
  }
  static const char* WordBreakCB(OGLE_Rec* rec, const char* begin, const char* end) {
    return self(rec)->WordBreak(begin, end);
  }

  static constexpr OGLE_Callbacks table = {
      GetVisibleBoundsCB, GetLogicalBoundsCB, SetLogicalHeightCB, ScrollToCB,     GetTextCB,
      ReplaceTextCB,      GetLineHeightCB,    MeasureStringCB,    FitStringFwdCB, FitStringRevCB,
      DrawStringCB,       DrawSelectionCB,    WordBreakCB,
  };
};

OGLE::OGLE() : rec(OGLE_Create(forward::table, this)) {}

OGLE::~OGLE() {
  OGLE_Destroy(rec);
}

void OGLE::Draw(int active) {
  OGLE_Draw(rec, active);
}

void OGLE::Click(float x, float y, int extend) {
  OGLE_Click(rec, x, y, extend);
}

void OGLE::Drag(float x, float y) {
  OGLE_Drag(rec, x, y);
}

void OGLE::Key(int character, int shift) {
  OGLE_Key(rec, character, shift);
}

void OGLE::Repaginate() {
  OGLE_Repaginate(rec);
}

void OGLE::GetSelection(int* start, int* end) const {
  OGLE_GetSelection(rec, start, end);
}

void OGLE::SetSelection(int start, int end) {
  OGLE_SetSelection(rec, start, end);
}

void OGLE::RevealSelection() {
  OGLE_RevealSelection(rec);
}

void OGLE::DoReplaceText(int start, int end, const char* new_begin, const char* new_end) {
  OGLE_ReplaceText(rec, start, end, new_begin, new_end);
}
