#pragma once

// What all lines of a page say together of its shape: one bend for the whole page that changes
// evenly from its top to its bottom. Single lines wander with their letters; the page does not.

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "dewarping/LineTracks.h"

namespace velloran::dewarping {

/// How well a shape explains the lines that it was found by.
struct ShapeEvidence {
    int tracedLines = 0, agreeingLines = 0;
    int longLines = 0;         // agreeing ones that cross a third of the text or more
    double agreeingShare = 0;  // of the length of all traced lines
    double residual = 0;       // rms of agreeing lines around the shape, in line pitches
    double halvesApart = 0;    // between the shapes of every other line and of the rest, pitches
    double bow = 0;            // how far lines of that shape leave straight ones, pitches
    double widthShare = 0;     // of the page, between the ends of the lines
    double heightShare = 0;    // of the page, between the first agreeing line and the last
    double linePitch = 0;      // pixels
};

class PageShape {
 public:
    /// Fits a shape to tracks on a page of that size. Nothing where there are too few. Throws
    /// std::bad_alloc, and std::runtime_error where the lines hold no shape.
    static std::optional<PageShape> fit(const std::vector<LineTrack>& tracks, double width,
                                        double height, double linePitch);

    const ShapeEvidence& evidence() const { return evidence_; }
    /// The ends of its lines.
    double left() const { return frame_.left; }
    double right() const { return frame_.right; }
    /// Tracks that the shape explains, from top to bottom.
    const std::vector<LineTrack>& agreeing() const { return agreeing_; }

    /// The line of the shape in place of agreeing track i, from x = left to x = right. Beyond the
    /// text it soon becomes level with its own end.
    std::vector<QT::QPointF> lineOf(std::size_t i, double left, double right) const;

 private:
    /// Coefficients of the bend and of its change down the page, over cubic B-splines.
    struct Bend {
        std::vector<double> common, change;
    };
    struct Frame {
        double left = 0, right = 0;  // of all tracks
        double middleY = 0, height = 1;
        double shareOf(double y) const { return (y - middleY) / height; }
    };

    static Frame frameOf(const std::vector<LineTrack>& tracks, double linePitch);
    /// Leaves out tracks that lie further than `most` pixels (rms) from the bend.
    void dropStrangers(std::vector<const LineTrack*>& tracks, std::vector<double>& places,
                       double most) const;
    double riseAt(const Bend& bend, double x, double u) const;
    Bend solve(std::span<const LineTrack* const> tracks, std::span<const double> places,
               double pitch) const;
    /// Of a track's points around the bend: their mean height, and what is left of each.
    double offsetOf(const LineTrack& track, const Bend& bend, double u, double& rms) const;
    void settlePlaces(std::span<const LineTrack* const> tracks, const Bend& bend,
                      std::vector<double>& places) const;
    double apartOf(const std::vector<const LineTrack*> (&halves)[2],
                   const std::vector<double> (&places)[2], double pitch) const;
    double bowOf(const Bend& bend) const;
    void judge(const std::vector<LineTrack>& tracks, double width, double height, double pitch);

    Frame frame_;
    Bend bend_;
    std::vector<LineTrack> agreeing_;
    std::vector<double> places_, offsets_;  // of the agreeing tracks
    ShapeEvidence evidence_;
};

}  // namespace velloran::dewarping
