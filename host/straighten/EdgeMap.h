// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

namespace host {

// Top left, top right, bottom right, bottom left; in pixels as displayed, (0, 0) being the outer corner of
// the top left pixel.
using Quad = std::array<cv::Point2d, 4>;

// The edges of a colour picture (top row first), of a size at which the sides of a sheet stand out and small
// print is still seen.
class EdgeMap {
  public:
    explicit EdgeMap(const cv::Mat3b& picture);

    cv::Size Size() const { return picture.size(); }
    double Diagonal() const { return std::hypot(picture.cols, picture.rows); }
    // Straight edges: x and y of both ends.
    const std::vector<cv::Vec4f>& Segments() const { return segments; }
    // Share of the way between two points that runs along an edge with unlike ground on its two sides.
    double SupportOf(cv::Point2d from, cv::Point2d to) const;
    // How many pixels outside a shape may belong to print; its own sides and straight edges do not.
    int MarksOutside(const Quad& quad) const;

  private:
    struct Mark {
        cv::Point2d place;
        float strength;
    };

    void MeasureStrength();
    void FindSegments();
    void FindMarks();
    bool HasEdgeNear(cv::Point2d place, cv::Point2d across) const;
    bool HasStepAt(cv::Point2d place, cv::Point2d across) const;

    cv::Mat3b picture;
    cv::Mat1f strength;     // of the steepest of the three colours, gray levels a pixel...
    cv::Mat1f along, down;  // ...and its direction
    float floor = 0;        // paler edges are none
    std::vector<cv::Vec4f> segments;
    std::vector<Mark> marks;  // edges that may be of print
};

}  // namespace host
