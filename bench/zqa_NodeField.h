#ifndef zqa_NodeField_h
#define zqa_NodeField_h

// Node results of a structured finite-element mesh, as a solver writes them
// for one load step: an id, the coordinates on a grid and a smooth
// displacement field. The values compress the way real results do (smooth,
// repeating coordinates), and producing one costs a few multiplications,
// so that a pass measures storing and reading, not the field.

#include <cmath>
#include <vector>

// One node's results. The explicit, always zero word after the id gives the
// struct the same 56 bytes in memory and in an HDF5 compound, with no
// padding of unspecified value.
struct zqa_NodeRow {
  int id;
  int unused;
  double x, y, z;
  double ux, uy, uz;
};

class zqa_NodeField {
public:
  static constexpr int kGridX = 160;
  static constexpr int kGridY = 120;

  zqa_NodeField() : m_AlongX(kGridX), m_AlongY(kGridY) {
    double const pi = std::acos(-1.0);
    for (int i = 0; i < kGridX; ++i) m_AlongX[static_cast<std::size_t>(i)] = std::sin(pi * (i + 0.5) / kGridX);
    for (int j = 0; j < kGridY; ++j) m_AlongY[static_cast<std::size_t>(j)] = std::cos(0.5 * pi * j / kGridY);
  }

  // Nodes are numbered along x, then y, then z.
  zqa_NodeRow At(int node) const {
    int const i = node % kGridX;
    int const j = node / kGridX % kGridY;
    int const k = node / (kGridX * kGridY);
    double const sx = m_AlongX[static_cast<std::size_t>(i)];
    double const cy = m_AlongY[static_cast<std::size_t>(j)];
    double const height = k * kSpacing;
    double const bend = kAmplitude * sx * cy * (1.0 + 0.05 * height);
    return {node + 1, 0, i * kSpacing, j * kSpacing, height, bend * 0.3, -bend * cy, bend};
  }

private:
  static constexpr double kSpacing = 0.0125;
  static constexpr double kAmplitude = 2.5e-3;

  std::vector<double> m_AlongX;
  std::vector<double> m_AlongY;
};

inline bool operator==(zqa_NodeRow const& a, zqa_NodeRow const& b) {
  return a.id == b.id && a.x == b.x && a.y == b.y && a.z == b.z && a.ux == b.ux && a.uy == b.uy && a.uz == b.uz;
}

#endif
