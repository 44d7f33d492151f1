#ifndef RZ_TESTS_COUNTED_ALGORITHM_H
#define RZ_TESTS_COUNTED_ALGORITHM_H

#include <memory>

#include "tavo/owned.h"

/// CountedAlgorithm counts its living clones, so that a test sees who leaks one.
class CountedAlgorithm final : public Tavo::Framework::IAlgorithm {
 public:
  explicit CountedAlgorithm(const char* name) : m_algorithm(Tavo::Framework::NewAlgorithm(name)) {}
  CountedAlgorithm(const CountedAlgorithm& other)
      : IAlgorithm(), m_algorithm(other.m_algorithm->Clone()), m_clones(other.m_clones), m_isClone(true) {
    ++*m_clones;
  }
  CountedAlgorithm& operator=(const CountedAlgorithm&) = delete;
  ~CountedAlgorithm() override {
    if (m_isClone) --*m_clones;
  }
  int clones() const { return *m_clones; }

  IAlgorithm* Clone() const override { return new CountedAlgorithm(*this); }
  Tavo::Framework::SecureString GetOID() override { return m_algorithm->GetOID(); }
  Tavo::Framework::SecureString GetFriendlyName() override { return m_algorithm->GetFriendlyName(); }
  Tavo::Framework::IAlgorithmParameters* GetParameters() override { return m_algorithm->GetParameters(); }

 private:
  std::unique_ptr<Tavo::Framework::IAlgorithm> m_algorithm;
  std::shared_ptr<int> m_clones = std::make_shared<int>(0);
  bool m_isClone = false;
};

#endif
