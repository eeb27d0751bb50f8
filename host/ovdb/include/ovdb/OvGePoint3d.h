#pragma once

// A point in model coordinates.
struct OvGePoint3d {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr OvGePoint3d() = default;
    constexpr OvGePoint3d(double px, double py, double pz) : x(px), y(py), z(pz) {}

    constexpr bool operator==(const OvGePoint3d&) const = default;
    bool isFinite() const;
};
