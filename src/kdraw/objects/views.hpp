#pragma once

#include "kdraw/objects/table_record.hpp"

namespace kdraw {

/// What a named view and a viewport of the model tab have in common.
struct ViewFields {
    double height = 297.0;
    double width = 420.0;
    Vector2 center;
    Vector3 target;
    Vector3 direction{0.0, 0.0, 1.0};
    double twist = 0.0;  ///< radians
    double lens = 50.0;
    double front = 0.0;
    double back = 0.0;
    int mode = 0;  ///< bits of group 71 without 8
    std::uint8_t render = 0;
    bool defaultLights = true;
    std::uint8_t lighting = 1;
    double brightness = 0.0;
    double contrast = 0.0;
    Color ambient{0xC2333333, {}, {}};

    /// From the clip distances on, in the binary order. Groups: mode is left to the caller.
    void describeLens(Fields& f);
    /// Render mode and lights.
    void describeLights(Fields& f);
};

/// Axes that a view or viewport has of its own.
struct UcsFields {
    Vector3 origin;
    Vector3 xAxis{1.0, 0.0, 0.0};
    Vector3 yAxis{0.0, 1.0, 0.0};
    double elevation = 0.0;
    std::int16_t orthographic = 0;

    void describe(Fields& f);
};

class ViewRecord : public TableRecord {
public:
    ViewFields view;
    bool paper = false;
    bool hasUcs = false;
    UcsFields ucs;
    bool plottableCamera = false;
    Handle background = 0, visualStyle = 0, sun = 0, baseUcs = 0, namedUcs = 0, liveSection = 0;

    void describe(Fields& f) override;
};

class UcsRecord : public TableRecord {
public:
    struct Orthographic {
        std::int16_t type = 0;
        Vector3 origin;
    };
    Vector3 origin;
    Vector3 xAxis{1.0, 0.0, 0.0};
    Vector3 yAxis{0.0, 1.0, 0.0};
    double elevation = 0.0;
    std::int16_t viewType = 0;
    std::vector<Orthographic> orthographic;
    Handle base = 0, named = 0;

    void describe(Fields& f) override;
};

class ViewportRecord : public TableRecord {
public:
    ViewFields view;
    Vector2 lower;
    Vector2 upper{1.0, 1.0};
    bool ucsFollow = false;
    std::int16_t circleZoom = 1000;
    bool fastZoom = true;
    std::uint8_t ucsIcon = 3;
    bool grid = false;
    Vector2 gridSpacing{10.0, 10.0};
    bool snap = false;
    bool snapStyle = false;
    std::int16_t snapPair = 0;
    double snapAngle = 0.0;  ///< radians
    Vector2 snapBase;
    Vector2 snapSpacing{10.0, 10.0};
    bool ucsAtOrigin = false;
    bool ucsPerViewport = true;
    UcsFields ucs;
    std::int16_t gridFlags = 3;
    std::int16_t gridMajor = 5;
    Handle background = 0, visualStyle = 0, sun = 0, namedUcs = 0, baseUcs = 0;

    void describe(Fields& f) override;

private:
    void describeGroups(Fields& f);
};

/// R2000 only: links a VIEWPORT entity to the table of viewports.
class ViewportHeader : public TableRecord {
public:
    bool on = true;
    Handle viewport = 0;
    Handle previous = 0;

    void describe(Fields& f) override;
};

}  // namespace kdraw
