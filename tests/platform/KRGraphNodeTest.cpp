#include "platform/KRGraphNode.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <thread>

#include "platform/KRList.h"

namespace {

/// A node with one edge forward and a list of nodes that it holds, as findings, contexts and results have them.
class Node : public KRGraphNode {
 public:
  Node() = default;
  ~Node() override { up.set(*this, nullptr); }

  KREdge<Node> up;
  KRList<Node> down{*this};
};

KRRef<Node> child(Node& parent) {
  auto node = krMake<Node>();
  parent.down.append(node);
  node->up.set(*node, &parent);
  return node;
}

/// Counts the nodes made and gone since it was made.
class NodeCount {
 public:
  uint64_t operator()() const { return KRGraphNode::liveCount() - before_; }

 private:
  uint64_t before_ = KRGraphNode::liveCount();
};

TEST(KRGraphNode, DiesWithItsOnlyReference) {
  const NodeCount nodes;
  { const auto node = krMake<Node>(); }
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, ALeafKeepsTheWholeGraph) {
  const NodeCount nodes;
  KRRef<Node> leaf;
  {
    const auto root = krMake<Node>();
    const auto hub = child(*root);
    leaf = child(*hub);
    child(*hub);
  }
  EXPECT_EQ(nodes(), 4U);
  EXPECT_EQ(leaf->up.get()->up.get()->down.count(), 1U);
  leaf = {};
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, ARemovedLeafThatIsKeptStillReachesTheGraph) {
  const NodeCount nodes;
  KRRef<Node> leaf;
  {
    const auto root = krMake<Node>();
    leaf = child(*root);
    root->down.remove(leaf.get());
  }
  EXPECT_EQ(nodes(), 2U);
  EXPECT_TRUE(leaf->up.get()->down.isEmpty());
  leaf = {};
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, ARemovedLeafThatNobodyKeepsDiesAtOnce) {
  const NodeCount nodes;
  const auto root = krMake<Node>();
  for (int i = 0; i < 3; ++i) child(*root);
  EXPECT_EQ(nodes(), 4U);
  root->down.removeAt(1);
  EXPECT_EQ(nodes(), 3U);
  root->down.removeAll();
  EXPECT_EQ(nodes(), 1U);
}

TEST(KRGraphNode, ACutLinkSetsBothSidesFree) {
  const NodeCount nodes;
  auto a = krMake<Node>();
  auto b = krMake<Node>();
  a->up.set(*a, b.get());
  a->up.set(*a, nullptr);
  b = {};
  EXPECT_EQ(nodes(), 1U);
  a = {};
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, ReferencesInACircleAndToItself) {
  const NodeCount nodes;
  {
    const auto a = krMake<Node>();
    const auto b = krMake<Node>();
    a->up.set(*a, b.get());
    b->up.set(*b, a.get());
    a->down.append(a);
    b->down.append(b);
    b->down.append(b);
  }
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, TwoGroupsJoinedByAHostDieTogether) {
  const NodeCount nodes;
  KRRef<Node> kept;
  {
    const auto first = krMake<Node>();
    const auto second = krMake<Node>();
    for (int i = 0; i < 5; ++i) child(*first);
    for (int i = 0; i < 3; ++i) kept = child(*second);
    first->down.append(second);
  }
  EXPECT_EQ(nodes(), 10U);
  kept = {};
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, AnEdgeMovedToAnotherTargetLetsTheOldOneGo) {
  const NodeCount nodes;
  const auto a = krMake<Node>();
  {
    const auto b = krMake<Node>();
    a->up.set(*a, b.get());
  }
  EXPECT_EQ(nodes(), 2U);
  {
    const auto c = krMake<Node>();
    a->up.set(*a, c.get());
  }
  EXPECT_EQ(nodes(), 2U);
  a->up.set(*a, nullptr);
  EXPECT_EQ(nodes(), 1U);
}

// Former bugs.

TEST(KRGraphNode, AGroupThatLosesItsHeldNodeToADyingOneIsThereUntilThatIsGone) {
  const NodeCount nodes;
  auto dying = krMake<Node>();
  const auto held = krMake<Node>();
  {
    const auto loop = krMake<Node>();
    child(*loop);
    dying->down.append(held);
    dying->down.append(loop);
  }
  // Its first reference that ends sets the held node free, and leaves the others without anyone who holds them.
  dying = {};
  EXPECT_EQ(nodes(), 1U);
  EXPECT_FALSE(held->isReferredTo());
}

/// A node whose destructor reads what it refers to outside of the graph.
class Witness : public KRObject {
 public:
  explicit Witness(int& deaths) : deaths_(deaths) {}
  ~Witness() override { ++deaths_; }

 private:
  int& deaths_;
};

class HostNode : public Node {
 public:
  explicit HostNode(KRRef<Witness> witness) : witness_(std::move(witness)) {}

 private:
  KRRef<Witness> witness_;
};

TEST(KRGraphNode, AHostsOwnNodesDropWhatTheyHold) {
  int deaths = 0;
  {
    const auto root = krMake<Node>();
    for (int i = 0; i < 4; ++i) {
      const auto node = krMake<HostNode>(krMake<Witness>(deaths));
      root->down.append(node.get());
      node->up.set(*node, root.get());
    }
    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 4);
}

TEST(KRGraphNode, ALargeGraphGoesWithItsLastReference) {
  const NodeCount nodes;
  KRRef<Node> last;
  {
    const auto root = krMake<Node>();
    for (int i = 0; i < 200'000; ++i) last = child(*root);
  }
  EXPECT_EQ(nodes(), 200'001U);
  last = {};
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, ALongChainGoesWithItsLastReference) {
  const NodeCount nodes;
  auto first = krMake<Node>();
  {
    KRRef<Node> at = first;
    for (int i = 0; i < 100'000; ++i) {
      auto next = krMake<Node>();
      at->up.set(*at, next.get());
      at = next;
    }
  }
  first = {};
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNode, ALongChainCutFromAHeldNodeGoesWithoutEatingTheStack) {
  const NodeCount nodes;
  const auto root = krMake<Node>();
  {
    KRRef<Node> at = root;
    for (int i = 0; i < 100'000; ++i) {
      auto next = krMake<Node>();
      at->up.set(*at, next.get());
      at = next;
    }
  }
  EXPECT_EQ(nodes(), 100'001U);
  root->up.set(*root, nullptr);
  EXPECT_EQ(nodes(), 1U);
}

/// A node that refers to itself for a moment while it is being destroyed.
class SelfishNode : public Node {
 public:
  ~SelfishNode() override { const KRRef<Node> self(this); }
};

TEST(KRGraphNode, ADestructorMayReferToItsOwnNode) {
  const NodeCount nodes;
  const auto held = krMake<Node>();
  {
    const auto dying = krMake<SelfishNode>();
    const auto loop = krMake<Node>();
    child(*loop);
    dying->down.append(held);
    dying->down.append(loop);
  }
  EXPECT_EQ(nodes(), 1U);
  EXPECT_FALSE(held->isReferredTo());
}

/// What the rules promise, told plainly: nodes linked to each other (in either direction, over any number of links)
/// live as long as one of them is held; a node that is not held and to which nothing refers is gone.
class Judge {
 public:
  int make() {
    held_.push_back(true);
    gone_.push_back(false);
    return static_cast<int>(held_.size()) - 1;
  }
  void link(int from, int to) { links_.emplace(from, to); }
  void unlink(int from, int to) { links_.erase(links_.find({from, to})); }
  void drop(int node) { held_[static_cast<size_t>(node)] = false; }
  bool isHeld(int node) const { return held_[static_cast<size_t>(node)]; }
  bool hasLink(int from, int to) const { return links_.contains({from, to}); }

  /// Nodes that must be alive: those that a held node reaches by following links forward.
  std::set<int> needed() const {
    std::set<int> reached;
    std::vector<int> open;
    for (size_t i = 0; i < held_.size(); ++i) {
      if (held_[i]) open.push_back(static_cast<int>(i));
    }
    while (!open.empty()) {
      const int node = open.back();
      open.pop_back();
      if (!reached.insert(node).second) continue;
      for (const auto& [from, to] : links_) {
        if (from == node) open.push_back(to);
      }
    }
    return reached;
  }

 private:
  std::vector<bool> held_;
  std::vector<bool> gone_;
  std::multiset<std::pair<int, int>> links_;
};

TEST(KRGraphNode, KeepsWhateverAHeldNodeReachesAndLeavesNothingBehind) {
  std::mt19937 random(4711);
  for (int round = 0; round < 400; ++round) {
    const NodeCount nodes;
    Judge judge;
    std::vector<KRRef<Node>> held;
    std::vector<Node*> all;
    for (int step = 0; step < 60; ++step) {
      std::vector<int> reachable;
      for (const int node : judge.needed()) reachable.push_back(node);
      const auto pick = [&] { return reachable[random() % reachable.size()]; };
      const auto choice = random() % 8;
      if (choice < 2 || reachable.empty()) {
        held.push_back(krMake<Node>());
        all.push_back(held.back().get());
        judge.make();
      } else if (choice < 5) {
        const int from = pick();
        const int to = pick();
        all[static_cast<size_t>(from)]->down.append(all[static_cast<size_t>(to)]);
        judge.link(from, to);
      } else if (choice < 6) {
        const int from = pick();
        const int to = pick();
        // A list lets go of every occurrence at once.
        if (judge.hasLink(from, to)) {
          while (judge.hasLink(from, to)) judge.unlink(from, to);
          all[static_cast<size_t>(from)]->down.remove(all[static_cast<size_t>(to)]);
        }
      } else {
        const int node = pick();
        judge.drop(node);
        held[static_cast<size_t>(node)] = {};
      }
      // Touching a node that is gone is what the address sanitizer would report.
      for (const int node : judge.needed()) ASSERT_FALSE(all[static_cast<size_t>(node)]->diesWithGroup());
      ASSERT_GE(nodes(), judge.needed().size());
    }
    held.clear();
    ASSERT_EQ(nodes(), 0U) << "round " << round;
  }
}

TEST(KRGraphNodeThreads, TakeAndDropReferencesAtTheSameTime) {
  const NodeCount nodes;
  {
    const auto root = krMake<Node>();
    for (int i = 0; i < 64; ++i) child(*root);
    const auto worker = [&](unsigned seed) {
      std::mt19937 random(seed);
      for (int i = 0; i < 20'000; ++i) {
        const KRRef<Node> leaf(root->down.at(random() % 64));
        const KRRef<Node> up = leaf->up.get();
        ASSERT_EQ(up.get(), root.get());
      }
    };
    std::thread other(worker, 1);
    worker(2);
    other.join();
  }
  EXPECT_EQ(nodes(), 0U);
}

TEST(KRGraphNodeThreads, TheLastReferenceMayFallOnAnyThread) {
  const NodeCount nodes;
  for (int round = 0; round < 500; ++round) {
    auto root = krMake<Node>();
    auto leaf = child(*root);
    std::thread other([held = std::move(root)]() mutable { held = {}; });
    leaf = {};
    other.join();
    ASSERT_EQ(nodes(), 0U);
  }
}

}  // namespace
