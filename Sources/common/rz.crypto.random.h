#ifndef RZ_CRYPTO_RANDOM_H
#define RZ_CRYPTO_RANDOM_H

namespace Tavo::Framework {

/// RandomOutcome is the second base of this library's random and GUID generators. GenerateRandom and GenerateGUID
/// return normally when the source fails; the generator notes it here, and who needs to know asks RandomFailed of the
/// public interface:
///
///   generator->GenerateRandom(length, seed);
///   if (RandomFailed(*generator)) throw kModule.Error(...);
class RandomOutcome {
 public:
  bool failed() const { return m_bFailed; }

 protected:
  ~RandomOutcome() = default;
  void NoteFilled(bool filled) { m_bFailed = !filled; }

 private:
  bool m_bFailed = false;
};

}  // namespace Tavo::Framework

#endif
