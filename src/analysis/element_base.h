// element_base.h: the bounded, ordered lists that the table builders sort
// and cut their URLs with before anything goes back to the database.
//
// CElementBase keeps only the order, as a linked list of nodes that point
// by index into a vector of the derived class. The derived class gives the
// bound, the comparison and the removal of an entry. A new entry that
// ranks behind every entry of a full list is refused; one that ranks in
// front pushes the last one out. Ties go behind the entries they tie with.
//
// A list may have no bound, so its place search must not walk the whole
// list: nodes also stand on a few higher levels chosen by chance, each
// linking past the nodes below it (a skip list), and a key finds its place
// in logarithmic steps. A key that ties with the last node or ranks behind
// it goes last after one comparison.

#ifndef CORVANE_ANALYSIS_ELEMENT_BASE_H_
#define CORVANE_ANALYSIS_ELEMENT_BASE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace corvane {

struct ElementNode {
  int32_t index = -1;  // position of the entry in the derived class's vector
  intptr_t key = 0;    // the sort key as the caller gave it
  // next[0] is the following node in rank order, null at the end; next[n]
  // the following node that stands on level n as well. prev links back on
  // the same levels. Both are as long as the levels the node stands on.
  std::vector<ElementNode*> next;
  std::vector<ElementNode*> prev;
};

// The two process-wide limits behind GetMaxCount. Both start at -1 (no
// bound) until the builders set them.
void SetElementLimits(int32_t domainLimit, int32_t urlLimit);
int32_t DomainElementLimit();
int32_t URLElementLimit();

class CElementBase {
 public:
  CElementBase();
  virtual ~CElementBase();
  CElementBase(const CElementBase&) = delete;
  CElementBase& operator=(const CElementBase&) = delete;

  // True when a node for the new entry went in; the caller must then append
  // the entry to its vector (at position count - 1).
  bool TryInsert(intptr_t key);
  // Moves the node of an entry to the place that newKey ranks at. The
  // caller changes the entry itself afterwards.
  void Reposition(int32_t index, intptr_t newKey);

  int32_t Count() const { return m_count; }
  // The entry positions in rank order.
  template <class Fn>
  void ForEachRanked(Fn fn) const {
    for (const ElementNode* node = m_head.next[0]; node != nullptr; node = node->next[0]) fn(node->index);
  }

 protected:
  // 0 or below: no bound.
  virtual int32_t GetMaxCount() const = 0;
  // Above 0 when newKey goes in front of the entry at index.
  virtual int32_t Compare(int32_t index, intptr_t key, intptr_t newKey) const = 0;
  virtual void RemoveAt(int32_t index) = 0;

 private:
  // Levels of 1 in 4 nodes each: enough for far more entries than memory.
  static constexpr size_t kLevels = 16;

  // On every level, the last node that the key does not go in front of.
  void FindPlace(intptr_t key, ElementNode** update);
  void Link(ElementNode* after, ElementNode* node, size_t level);
  void Unlink(ElementNode* node, size_t level);
  size_t DrawLevels();
  void EvictTail();

  ElementNode m_head;
  // The last node on each level, &m_head on an empty one; m_last[0] is the
  // last node of the list.
  ElementNode* m_last[kLevels];
  // The node of each entry position.
  std::vector<ElementNode*> m_nodes;
  // State of the level draws; fixed, so that a run repeats exactly.
  uint32_t m_draw = 0x9E3779B9u;
  int32_t m_count = 0;
};

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_ELEMENT_BASE_H_
