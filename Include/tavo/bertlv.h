#ifndef TAVO_BERTLV_H
#define TAVO_BERTLV_H

#include "rz/cext.h"

/// GCTLVExceptionId numbers the failures of BERTLVBuffer. Any other number is legal in an exception too.
enum GCTLVExceptionId : unsigned long {
  GCTLV_INVALID_BUFFER_FORMAT = 1000  ///< the bytes are no sequence of BER-TLV objects
};

/// CGctlvException is the exception of BERTLVBuffer, thrown as `CGctlvException*`, a pointer to a heap object that
/// whoever catches it deletes; `catch (IException*)` catches it too.
class RZ_CRYPTO_API CGctlvException : public Tavo::Framework::CException {
 public:
  using SecureString = Tavo::Framework::SecureString;

  /// The constructor takes ownership of `inner`, which may be null. `file` is the module that throws.
  CGctlvException(SecureString file, unsigned long line, SecureString message, GCTLVExceptionId id,
                  CGctlvException* inner);
  CGctlvException(CGctlvException& other);
  CGctlvException(const CGctlvException& other);
  CGctlvException& operator=(const CGctlvException&) = delete;
  ~CGctlvException() override;

  /// StringFromId returns the identifier as text: "ID:1000 (GCTLV_INVALID_BUFFER_FORMAT)", or "ID:n (Unknown Exception
  /// Id)" for any other number.
  virtual SecureString StringFromId();
};

/// BERTLVBuffer holds a flat sequence of BER-TLV data objects (ISO/IEC 7816-4, clause 5.2; ISO/IEC 8825-1): tag,
/// length, value, one after the other in one array.
///
/// Tags and values are raw bytes. The class bits and the constructed bit of a tag mean nothing here and no value is
/// looked into: to read a constructed object, give its value to another BERTLVBuffer. Two tags are equal when all
/// their bytes are. 00 is a tag like any other, not padding.
///
/// * A tag is one byte, unless its five low bits are all set; then the bytes that follow belong to it up to and
///   including the first one below 80.
/// * A length is one byte below 80, or a byte 80 + n and n bytes, most significant first. Any n is read: 0 gives the
///   length 0, of more than 8 bytes only the last 8 count. After a length of this second form the buffer must go on
///   by at least one byte, even if the length is 0. Lengths are written in the shortest form.
///
/// Failures are thrown as `CGctlvException*` 1000 from "Sources/tavobertlvbuffer":
///
/// * "Invalid format while parsing BER TLV tag": a tag runs past the end;
/// * "Invalid format while parsing BER TLV length": a length is missing or runs past the end;
/// * "Invalid format while updating BER TLV buffer": a value runs past the end.
///
/// Three ways lead to a malformed buffer: SetBuffer keeps what it refused; AppendValue does not check the tag; and a
/// removal can leave an empty object with a length of the second form at the end. Then each lookup fails that comes to
/// the malformed place, and each removal, before it changes anything.
///
/// Outputs are written on success only, but for ParseTag. One object serves one thread at a time. A tag or value given
/// in may be the buffer itself, as the conversion lends it. Out of memory is thrown as std::bad_alloc or
/// std::length_error, by value, and leaves the buffer as it was; SetBuffer may have taken the bytes by then that it is
/// about to refuse.
class RZ_CRYPTO_API BERTLVBuffer {
 public:
  using ByteArray = Tavo::Framework::ByteArray;
  using ByteArrayList = Tavo::Framework::ByteArrayList;

  BERTLVBuffer();
  /// The constructor from bytes does what SetBuffer does.
  BERTLVBuffer(const ByteArray& buffer);
  BERTLVBuffer(const BERTLVBuffer& other);
  BERTLVBuffer(BERTLVBuffer&& other) noexcept;
  BERTLVBuffer& operator=(const BERTLVBuffer& other);
  BERTLVBuffer& operator=(BERTLVBuffer&& other) noexcept;
  virtual ~BERTLVBuffer();

  /// SetBuffer replaces the contents by a copy of `buffer` and checks that whole objects fill it exactly. Throws 1000
  /// with any of the three messages; the contents are then the refused bytes. Bytes by which the contents get shorter
  /// are wiped.
  void SetBuffer(const ByteArray& buffer);
  /// The conversion lends the contents; the reference is good until the next change.
  operator const ByteArray&() const;

  /// ParseTag reads the tag at the offset `pos`, any number, into `tag` and moves `pos` past it. Throws 1000; `pos`
  /// then stays and `tag` is empty.
  void ParseTag(unsigned long& pos, ByteArray& tag) const;
  /// ParseLength reads the length at the offset `pos`, any number, into `length` and moves `pos` past its bytes. The
  /// length may exceed what the buffer holds: compare it with what remains before using it. Throws 1000; `pos` and
  /// `length` then stay.
  void ParseLength(unsigned long& pos, unsigned long& length) const;

  /// IsTagPresent returns whether any object has this tag. Throws 1000.
  bool IsTagPresent(const ByteArray& tag) const;
  /// GetValue copies the value of the first object with this tag and returns true; false, and `value` stays, when there
  /// is none. Throws 1000.
  bool GetValue(const ByteArray& tag, ByteArray& value) const;
  /// GetValueList appends the values of all objects with this tag to `values`, in the order of the buffer. Throws 1000.
  void GetValueList(const ByteArray& tag, ByteArrayList& values) const;
  /// ListTags appends the tag of each object to `tags`, in the order of the buffer, repeated ones as well. Throws 1000.
  void ListTags(ByteArrayList& tags) const;

  /// AppendValue appends an object, whether or not the tag is there already. The tag is not checked: an empty or
  /// unfinished one makes later operations fail.
  void AppendValue(const ByteArray& tag, const ByteArray& value);
  /// AppendValueList appends an object for each value, in the order of the list.
  void AppendValueList(const ByteArray& tag, const ByteArrayList& values);
  /// AddValue replaces all objects with this tag by one new object at the end. Throws 1000, the buffer then stays.
  void AddValue(const ByteArray& tag, const ByteArray& value);
  /// AddValueList replaces all objects with this tag by new ones at the end. Throws 1000, the buffer then stays.
  void AddValueList(const ByteArray& tag, const ByteArrayList& values);
  /// RemoveValue removes the first object with this tag and returns whether there was one. The bytes that the buffer
  /// shrinks by are wiped. Throws 1000, the buffer then stays.
  bool RemoveValue(const ByteArray& tag);
  /// RemoveValueList removes all objects with this tag in one pass. The bytes that the buffer shrinks by are wiped.
  /// Throws 1000, the buffer then stays.
  void RemoveValueList(const ByteArray& tag);

 private:
  ByteArray m_baBuffer;
};

#endif
