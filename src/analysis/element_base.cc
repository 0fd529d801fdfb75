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

CElementBase::~CElementBase() {
  ElementNode* node = m_head.next;
  while (node != nullptr) {
    ElementNode* next = node->next;
    delete node;
    node = next;
  }
}

// Drops the last node and its entry; the indices behind it close up. When
// the last node was the place the new node was to go in front of, the new
// node goes last instead.
void CElementBase::EvictTail(ElementNode** place) {
  ElementNode* beforeTail = &m_head;
  while (beforeTail->next->next != nullptr) beforeTail = beforeTail->next;
  ElementNode* tail = beforeTail->next;
  if (*place == tail) *place = nullptr;
  for (ElementNode* node = m_head.next; node != tail; node = node->next) {
    if (node->index > tail->index) node->index -= 1;
  }
  beforeTail->next = nullptr;
  RemoveAt(tail->index);
  delete tail;
  m_count -= 1;
}

bool CElementBase::TryInsert(intptr_t key) {
  int32_t max = GetMaxCount();
  ElementNode* prev = &m_head;
  ElementNode* place = m_head.next;
  while (place != nullptr && Compare(place->index, place->key, key) <= 0) {
    prev = place;
    place = place->next;
  }
  bool full = max >= 1 && m_count == max;
  if (full && place == nullptr) return false;
  if (full) {
    EvictTail(&place);
    // The node in front of the place may have been the tail's predecessor,
    // which is still linked; find prev again from the head.
    prev = &m_head;
    while (prev->next != place) prev = prev->next;
  }
  m_count += 1;
  prev->next = new ElementNode{m_count - 1, key, place};
  return true;
}

void CElementBase::Reposition(int32_t index, intptr_t newKey) {
  ElementNode* prev = &m_head;
  while (prev->next != nullptr && prev->next->index != index) prev = prev->next;
  ElementNode* node = prev->next;
  if (node == nullptr) return;
  prev->next = node->next;
  prev = &m_head;
  while (prev->next != nullptr && Compare(prev->next->index, prev->next->key, newKey) <= 0) prev = prev->next;
  node->next = prev->next;
  prev->next = node;
  node->key = newKey;
}

}  // namespace corvane
