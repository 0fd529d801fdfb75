// element_base.h: the bounded, ordered lists that the table builders sort
// and cut their URLs with before anything goes back to the database.
//
// CElementBase keeps only the order, as a short linked list of nodes that
// point by index into a vector of the derived class. The derived class
// gives the bound, the comparison and the removal of an entry. A new entry
// that ranks behind every entry of a full list is refused; one that ranks
// in front pushes the last one out. Ties go behind the entries they tie
// with.

#ifndef CORVANE_ANALYSIS_ELEMENT_BASE_H_
#define CORVANE_ANALYSIS_ELEMENT_BASE_H_

#include <cstdint>

namespace corvane {

struct ElementNode {
  int32_t index = -1;     // position of the entry in the derived class's vector
  intptr_t key = 0;       // the sort key as the caller gave it
  ElementNode* next = nullptr;
};

// The two process-wide limits behind GetMaxCount. Both start at -1 (no
// bound) until the builders set them.
void SetElementLimits(int32_t domainLimit, int32_t urlLimit);
int32_t DomainElementLimit();
int32_t URLElementLimit();

class CElementBase {
 public:
  CElementBase() = default;
  virtual ~CElementBase();
  CElementBase(const CElementBase&) = delete;
  CElementBase& operator=(const CElementBase&) = delete;

  // True when a node for the new entry went in; the caller must then append
  // the entry to its vector (at position count - 1).
  bool TryInsert(intptr_t key);
  // Moves the node of an entry to the place that newKey ranks at.
  void Reposition(int32_t index, intptr_t newKey);

  int32_t Count() const { return m_count; }
  // The entry positions in rank order.
  template <class Fn>
  void ForEachRanked(Fn fn) const {
    for (const ElementNode* node = m_head.next; node != nullptr; node = node->next) fn(node->index);
  }

 protected:
  // 0 or below: no bound.
  virtual int32_t GetMaxCount() const = 0;
  // Above 0 when newKey goes in front of the entry at index.
  virtual int32_t Compare(int32_t index, intptr_t key, intptr_t newKey) const = 0;
  virtual void RemoveAt(int32_t index) = 0;

 private:
  void EvictTail(ElementNode** place);

  ElementNode m_head;
  int32_t m_count = 0;
};

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_ELEMENT_BASE_H_
