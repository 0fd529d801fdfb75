#include "analysis/element_base.h"

namespace corvane {
namespace {

int32_t g_domainLimit = -1;
int32_t g_urlLimit = -1;

}  // namespace

void SetElementLimits(int32_t domainLimit, int32_t urlLimit) {
  g_domainLimit = domainLimit;
  g_urlLimit = urlLimit;
}

int32_t DomainElementLimit() { return g_domainLimit; }
int32_t URLElementLimit() { return g_urlLimit; }

CElementBase::CElementBase() {
  m_head.next.assign(kLevels, nullptr);
  m_head.prev.assign(kLevels, nullptr);
  for (ElementNode*& last : m_last) last = &m_head;
}

CElementBase::~CElementBase() {
  ElementNode* node = m_head.next[0];
  while (node != nullptr) {
    ElementNode* next = node->next[0];
    delete node;
    node = next;
  }
}

void CElementBase::FindPlace(intptr_t key, ElementNode** update) {
  // The nodes stand in rank order, so the key goes in front of some node
  // only if it goes in front of the last one; else it goes last.
  ElementNode* tail = m_last[0];
  if (tail == &m_head || Compare(tail->index, tail->key, key) <= 0) {
    for (size_t level = 0; level < kLevels; ++level) update[level] = m_last[level];
    return;
  }
  ElementNode* node = &m_head;
  for (size_t level = kLevels; level-- > 0;) {
    for (ElementNode* ahead = node->next[level]; ahead != nullptr && Compare(ahead->index, ahead->key, key) <= 0;
         ahead = node->next[level]) {
      node = ahead;
    }
    update[level] = node;
  }
}

void CElementBase::Link(ElementNode* after, ElementNode* node, size_t level) {
  ElementNode* following = after->next[level];
  node->next[level] = following;
  node->prev[level] = after;
  after->next[level] = node;
  if (following != nullptr) {
    following->prev[level] = node;
  } else {
    m_last[level] = node;
  }
}

void CElementBase::Unlink(ElementNode* node, size_t level) {
  ElementNode* before = node->prev[level];
  ElementNode* following = node->next[level];
  before->next[level] = following;
  if (following != nullptr) {
    following->prev[level] = before;
  } else {
    m_last[level] = before;
  }
}

// One level always, each further one with a chance of 1 in 4.
size_t CElementBase::DrawLevels() {
  m_draw ^= m_draw << 13;
  m_draw ^= m_draw >> 17;
  m_draw ^= m_draw << 5;
  size_t levels = 1;
  for (uint32_t bits = m_draw; levels < kLevels && (bits & 3u) == 0; bits >>= 2) ++levels;
  return levels;
}

// Drops the last node and its entry; the indices behind it close up.
void CElementBase::EvictTail() {
  ElementNode* tail = m_last[0];
  for (size_t level = 0; level < tail->next.size(); ++level) Unlink(tail, level);
  int32_t index = tail->index;
  m_nodes.erase(m_nodes.begin() + index);
  for (size_t i = static_cast<size_t>(index); i < m_nodes.size(); ++i) m_nodes[i]->index = static_cast<int32_t>(i);
  RemoveAt(index);
  delete tail;
  m_count -= 1;
}

bool CElementBase::TryInsert(intptr_t key) {
  int32_t max = GetMaxCount();
  ElementNode* update[kLevels];
  FindPlace(key, update);
  // The place: the first node that the new key goes in front of.
  bool hasPlace = update[0]->next[0] != nullptr;
  bool full = max >= 1 && m_count == max;
  if (full && !hasPlace) return false;
  // The tail is never in update: the key goes in front of it. When the
  // tail was the place, the new node goes last.
  if (full) EvictTail();
  auto* node = new ElementNode;
  node->index = static_cast<int32_t>(m_nodes.size());
  node->key = key;
  size_t levels = DrawLevels();
  node->next.assign(levels, nullptr);
  node->prev.assign(levels, nullptr);
  for (size_t level = 0; level < levels; ++level) Link(update[level], node, level);
  m_nodes.push_back(node);
  m_count += 1;
  return true;
}

void CElementBase::Reposition(int32_t index, intptr_t newKey) {
  if (index < 0 || static_cast<size_t>(index) >= m_nodes.size()) return;
  ElementNode* node = m_nodes[static_cast<size_t>(index)];
  for (size_t level = 0; level < node->next.size(); ++level) Unlink(node, level);
  ElementNode* update[kLevels];
  FindPlace(newKey, update);
  for (size_t level = 0; level < node->next.size(); ++level) Link(update[level], node, level);
  node->key = newKey;
}

}  // namespace corvane
