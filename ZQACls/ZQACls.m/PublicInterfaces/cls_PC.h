#ifndef cls_PC_h
#define cls_PC_h

#include "ZQABasExport.h"

// A persistent container's node in its transporter's ring: the transporter
// asks every container to push its pending state into its agent at Flush,
// and tells each to let go at its end with Disconnect. The transporter's own
// node is the ring's head.
//
// Invariant: a node is in at most one ring; alone, it is its own neighbour.
// A node leaves its ring when destroyed, and Disconnect must leave it too:
// the transporter disconnects nodes until its ring is empty.
class ZQA_EXPORT cls_PC {
public:
  cls_PC() = default;
  cls_PC(cls_PC const&) = delete;
  cls_PC& operator=(cls_PC const&) = delete;
  virtual ~cls_PC();

  // Pushes the container's pending state into its agent. Nothing here.
  virtual void Flush();
  // The transporter is going away: the container drops its agent and
  // leaves the ring. Here: leaves the ring.
  virtual void Disconnect();

  // Joins the ring of head, before head (at the ring's end), leaving any
  // ring this node was in.
  void Link(cls_PC* head);
  void UnLink();
  bool IsLinked() const { return m_Next != this; }
  cls_PC* Next() const { return m_Next; }

private:
  cls_PC* m_Next = this;
  cls_PC* m_Prev = this;
};

#endif
