// A text editor that does not know where its text lives or how it looks: both come through a table
// of callbacks, so that one engine serves a field of one line and a page that scrolls.
//
// It keeps the selection, the table of line starts and the remembered column. Positions are byte
// offsets, as text is one byte a character. Coordinates are the caller's, y upward.
//
//   field        OGLE_Click, OGLE_Drag, OGLE_Key      what the user does
//                OGLE_ReplaceText                     an edit from outside; the selection follows
//                it
//   text         changed behind the editor's back:    call OGLE_Repaginate before anything else
//
// Main thread only.
#pragma once

#include <cstdint>
#include <vector>

struct OGLE_Rec;

struct OGLE_Bounds {
  float left, bottom, right, top;
};

struct OGLE_Callbacks {
  // What is visible, in screen units; and the whole text, at its present scroll.
  void (*GetVisibleBounds)(OGLE_Rec* rec, OGLE_Bounds* bounds);
  void (*GetLogicalBounds)(OGLE_Rec* rec, OGLE_Bounds* bounds);
  void (*SetLogicalHeight)(OGLE_Rec* rec, float height);
  void (*ScrollTo)(OGLE_Rec* rec, float x, float y);
  // First byte, and one past the last.
  void (*GetText)(OGLE_Rec* rec, const char** begin, const char** end);
  // Puts the bytes from new_begin to new_end, which may be none, in place of start to end.
  void (*ReplaceText)(OGLE_Rec* rec, int start, int end, const char* new_begin,
                      const char* new_end);
  float (*GetLineHeight)(OGLE_Rec* rec);
  float (*MeasureString)(OGLE_Rec* rec, const char* begin, const char* end);
  // How many bytes from the begin fill `width`, and how many from the end backward.
  int (*FitStringFwd)(OGLE_Rec* rec, const char* begin, const char* end, float width);
  int (*FitStringRev)(OGLE_Rec* rec, const char* begin, const char* end, float width);
  void (*DrawString)(OGLE_Rec* rec, const char* begin, const char* end, float x, float y);
  // A rectangle; left equal to right is the caret.
  void (*DrawSelection)(OGLE_Rec* rec, const OGLE_Bounds& bounds);
  // End of the next word.
  const char* (*WordBreak)(OGLE_Rec* rec, const char* begin, const char* end);
};

struct OGLE_Rec {
  OGLE_Callbacks call;
  void* ref;                         // the caller's own
  std::vector<int32_t> line_starts;  // first byte of each line
  int32_t sel_start = 0;
  int32_t sel_end = 0;        // equal to sel_start: a plain caret
  int32_t end_is_active = 1;  // which end the user moves: 1 the end, 0 the start
  float caret_column = -1;    // x that up and down return to, from the line's left; -1 none
};

// Copies the table. The line table is empty until the first OGLE_Repaginate.
OGLE_Rec* OGLE_Create(const OGLE_Callbacks& table, void* ref);
void OGLE_Destroy(OGLE_Rec* rec);  // null is allowed
void* OGLE_GetRef(const OGLE_Rec* rec);

void OGLE_GetSelection(const OGLE_Rec* rec, int* start, int* end);  // either may be null
void OGLE_SetSelection(OGLE_Rec* rec, int start, int end);          // in any order, any value
void OGLE_RevealSelection(OGLE_Rec* rec);                           // scrolls to the active end

void OGLE_Draw(OGLE_Rec* rec, int active);  // `active` shows the caret

void OGLE_Click(OGLE_Rec* rec, float x, float y, int extend);
void OGLE_Drag(OGLE_Rec* rec, float x, float y);
// Backspace (8), left, right, up, down (28 to 31); any other character is typed. `shift` extends
// the selection.
void OGLE_Key(OGLE_Rec* rec, int character, int shift);

void OGLE_ReplaceText(OGLE_Rec* rec, int start, int end, const char* new_begin,
                      const char* new_end);
void OGLE_Repaginate(OGLE_Rec* rec);  // works out the lines anew

// The same for callers who prefer virtual functions to a table.
class OGLE {
 public:
  OGLE();
  virtual ~OGLE();
  OGLE(const OGLE&) = delete;
  OGLE& operator=(const OGLE&) = delete;

  void Draw(int active);
  void Click(float x, float y, int extend);
  void Drag(float x, float y);
  void Key(int character, int shift);
  void Repaginate();
  void GetSelection(int* start, int* end) const;
  void SetSelection(int start, int end);
  void RevealSelection();
  void DoReplaceText(int start, int end, const char* new_begin, const char* new_end);

 protected:
  virtual void GetVisibleBounds(OGLE_Bounds* bounds) = 0;
  virtual void GetLogicalBounds(OGLE_Bounds* bounds) = 0;
  virtual void SetLogicalHeight(float height) = 0;
  virtual void ScrollTo(float x, float y) = 0;
  virtual void GetText(const char** begin, const char** end) = 0;
  virtual void ReplaceText(int start, int end, const char* new_begin, const char* new_end) = 0;
  virtual float GetLineHeight() = 0;
  virtual float MeasureString(const char* begin, const char* end) = 0;
  virtual int FitStringFwd(const char* begin, const char* end, float width) = 0;
  virtual int FitStringRev(const char* begin, const char* end, float width) = 0;
  virtual void DrawString(const char* begin, const char* end, float x, float y) = 0;
  virtual void DrawSelection(const OGLE_Bounds& bounds) = 0;
  virtual const char* WordBreak(const char* begin, const char* end) = 0;

  OGLE_Rec* rec;  // its ref is this object

 private:
  struct forward;  // the table's static functions
};
