// TQString: the one owning string type of the system, a sequence of 16-bit units.
//
// One unit counts as one character everywhere: lengths, indexes and positions are units, and a
// surrogate pair is two. A unit of value 0 ends the text; no TQString holds one inside.
//
// A TQString is one pointer to a heap block (capacity, length, units, terminating 0). Every copy
// is deep and has exactly the capacity of its length; moves are free. All empty strings that own
// no block share one static block which nobody writes. Text that is only read travels as
// std::u16string_view; a view into a TQString lives until the string is changed or destroyed.
//
// Failure: an allocation that fails raises TQExcept -1001, an index beyond the capacity -1010.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

namespace kelmora {

class TQString {
 public:
  static constexpr int kNotFound = -1;

  TQString() noexcept : block_(Empty()) {}
  TQString(const TQString& other);
  TQString(TQString&& other) noexcept : block_(other.block_) { other.block_ = Empty(); }
  TQString(const char16_t* text);      // null is the empty text
  TQString(std::u16string_view text);  // cut at the first unit of value 0
  explicit TQString(char16_t unit);
  ~TQString() {
    if (OwnsBlock()) Free();
  }

  TQString& operator=(const TQString& other);
  TQString& operator=(TQString&& other) noexcept;
  TQString& operator=(std::u16string_view text);
  TQString& operator=(const char16_t* text);

  // --- reading -------------------------------------------------------------------------------
  const char16_t* c_str() const { return Text(); }  // never null
  int Length() const { return block_->length; }
  int Capacity() const { return block_->capacity; }
  bool IsEmpty() const { return block_->length == 0; }
  std::u16string_view View() const { return {Text(), static_cast<std::size_t>(block_->length)}; }
  operator std::u16string_view() const { return View(); }  // NOLINT(google-explicit-constructor)
  // Checked against the capacity, not the length: beyond the length reads what the block holds.
  char16_t operator[](int index) const {
    if (index < 0 || index > block_->capacity) RaiseBadIndex();
    return Text()[index];
  }

  // Unit index of the first occurrence at or behind `start`, or kNotFound.
  int Find(std::u16string_view text, int start = 0) const;
  int Find(char16_t unit, int start = 0) const;
  int FindOneOf(std::u16string_view set, int start = 0) const;
  int ReverseFind(char16_t unit) const;

  // --- storage -------------------------------------------------------------------------------
  void Clear() noexcept {  // frees the block
    if (OwnsBlock()) Free();
  }
  void Resize(int capacity);        // exactly; keeps what fits; 0 frees the block
  void Reserve(int capacity);       // grows only; rounded up to a multiple of 10; keeps the text
  void ReserveEmpty(int capacity);  // as Reserve, but the text becomes empty
  void ReserveRaw(int capacity);    // as Reserve, but the text is undefined until written
  // For a producer that knows how much it will write at most: a block for `capacity` units, all
  // undefined, which must not be read before FinishWriting has said how many were written. None
  // of them may be 0. The capacity becomes the length.
  char16_t* WriteBuffer(int capacity);
  void FinishWriting(int length);

  // --- changing in place ---------------------------------------------------------------------
  TQString& operator+=(std::u16string_view text);  // amortised: growth is geometric
  TQString& operator+=(const TQString& text) { return Append(text.View()); }
  TQString& operator+=(const char16_t* text);
  TQString& operator+=(char16_t unit);
  // Appends at `cursor`, the caller's count of the units written so far, and advances it. What
  // stood behind `cursor` is gone. `margin` is the least growth when the block is full. Amortised
  // linear. A unit of value 0 is not appended.
  void AppendAt(std::u16string_view text, int& cursor, int margin);
  void AppendUnitAt(char16_t unit, int& cursor, int margin) {
    if (unit == 0) return;
    if (cursor >= block_->capacity) Grow(std::int64_t{cursor} + 1, margin, cursor);
    Text()[cursor++] = unit;
    SetLength(cursor);
  }

  void Insert(std::u16string_view text, int position);  // beyond the length: nothing
  void Delete(int position, int count);
  void Replace(char16_t from, char16_t to);  // `to` of value 0 cuts the text at the first `from`
  // From the left, at most `limit` times (0: all); inserted text is not searched again.
  void Replace(std::u16string_view find, std::u16string_view with, int limit);
  void MakeLower();

  void TrimLeft(std::u16string_view set);
  void TrimRight(std::u16string_view set);
  void TrimLeft(char16_t unit) { TrimLeft(std::u16string_view(&unit, 1)); }
  void TrimRight(char16_t unit) { TrimRight(std::u16string_view(&unit, 1)); }
  void TrimLeft();  // white space as the C library's wide isspace sees it
  void TrimRight();

  // Each run of units of `set` becomes one `replacement`. With `quotes`, text between two units
  // of `quotes` is left alone.
  void Squeeze(std::u16string_view set, char16_t replacement, std::u16string_view quotes = {});
  // "&#65;" and "&#x41;" become their unit, modulo 2^16; named references stay as they are.
  void DecodeCharacterReferences();
  void ToUtf8Units();  // each unit becomes its UTF-8 bytes, one byte in a unit
  void EscapeUrl();    // ToUtf8Units, then %XX for what a URL may not hold
  // CR LF, CR and LF each become `lineEnd`, which has one unit or two; another length does nothing.
  void ConvertLineEnds(std::u16string_view lineEnd);

  // --- parts ---------------------------------------------------------------------------------
  TQString Left(int count) const;
  TQString Right(int count) const;
  TQString Mid(int start) const;
  TQString Mid(int start, int count) const;
  // The next token from `position` on, which afterwards stands on the unit that ended it. Units
  // of `quotes` switch the delimiters off and on and stay in the token. Empty: no more tokens.
  TQString Tokenize(std::u16string_view delimiters, int& position,
                    std::u16string_view quotes = {}) const;

  bool IsBlank() const;  // nothing but blank, tab, CR, LF; the empty text is blank
  bool HasColon() const { return Find(u':') != kNotFound; }
  TQString Prefix() const;
  TQString LocalPart() const;
  const char16_t* LocalPartPointer() const;

  // --- paths and URLs: "/" and "\" both separate ---------------------------------------------
  TQString FileName() const;
  TQString Directory(bool keepSeparator) const;
  TQString Extension(bool lowerCase) const;
  bool IsRelativePath(bool rootCountsAsAbsolute) const;
  bool SamePath(const TQString& other) const;
  TQString ResolveRelativePath(const TQString& base, const TQString& defaultDirectory) const;

  // One of the constants u"\r\n", u"\r", u"\n": that of the first line break, u"\r\n" without one.
  const char16_t* DetectLineEnd() const;

  // --- making text ---------------------------------------------------------------------------
  class FormatArgument {
   public:
    FormatArgument(std::u16string_view text) : text_(text), isText_(true) {}
    FormatArgument(const TQString& text) : text_(text.View()), isText_(true) {}
    FormatArgument(const char16_t* text) : text_(text), isText_(true) {}
    FormatArgument(std::int64_t number) : number_(number) {}
    FormatArgument(int number) : number_(number) {}

   private:
    friend class FormatWriter;
    std::u16string_view text_;
    std::int64_t number_ = 0;
    bool isText_ = false;
  };
  // printf with %s, %d, %ld, %X (with a width such as %02X) and %%; cut at 1030 units.
  static TQString Format(std::u16string_view format,
                         std::initializer_list<FormatArgument> arguments);
  // The same into `buffer`, without any allocation; a terminating 0 follows what fits. Returns the
  // units written, the 0 not counted.
  static std::size_t FormatInto(std::span<char16_t> buffer, std::u16string_view format,
                                std::initializer_list<FormatArgument> arguments);
  // The text of the program's string table; false, and no change, for an id it lacks.
  bool LoadResource(int id);
  // "" for a number below 1 (and, in Roman numerals, of 10000 and more).
  static TQString RomanNumeral(int number, bool upperCase);
  static TQString AlphabeticNumeral(int number, bool upperCase);

  friend bool operator==(const TQString& a, const TQString& b) { return a.View() == b.View(); }
  friend bool operator==(const TQString& a, std::u16string_view b) { return a.View() == b; }
  friend bool operator==(const TQString& a, const char16_t* b) { return a.View() == b; }
  friend auto operator<=>(const TQString& a, const TQString& b) { return a.View() <=> b.View(); }

 private:
  struct Block {  // followed in memory by capacity + 1 units
    std::int32_t capacity;
    std::int32_t length;
  };
  struct EmptyBlock;  // a Block and its terminating 0
  static EmptyBlock empty_;
  static Block* Empty() { return reinterpret_cast<Block*>(&empty_); }

  char16_t* Text() const { return reinterpret_cast<char16_t*>(block_ + 1); }
  [[noreturn]] static void RaiseBadIndex();
  bool OwnsBlock() const { return block_ != Empty(); }
  bool Holds(const char16_t* position) const;
  void Free() noexcept;
  void SetLength(int length) {  // only with a block of its own
    block_->length = length;
    Text()[length] = 0;
  }
  void Reallocate(std::int64_t capacity, int keep);
  void Grow(std::int64_t needed, std::int64_t margin, int keep);
  // These trust that the text holds no unit of value 0.
  void Put(std::u16string_view text, int& cursor, int margin);
  TQString& Assign(std::u16string_view text);
  TQString& Append(std::u16string_view text);

  Block* block_;
};

TQString operator+(const TQString& left, std::u16string_view right);
TQString operator+(const TQString& left, const TQString& right);
TQString operator+(const TQString& left, const char16_t* right);
TQString operator+(const char16_t* left, const TQString& right);
TQString operator+(char16_t left, const TQString& right);

// For ordered and hashed containers keyed by TQString that are searched with a view. TextHash is in
// tqcore/texthash.h.
struct TextLess {
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const { return a < b; }
};
struct TextEqual {
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const { return a == b; }
};

}  // namespace kelmora
