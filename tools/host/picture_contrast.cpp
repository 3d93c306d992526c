#include "tools/host/picture_contrast.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace ozdkhost {

namespace {

double Luminance(COLORREF colour) {
    const auto linear = [](BYTE channel) {
        const double c = channel / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(GetRValue(colour)) + 0.7152 * linear(GetGValue(colour)) +
           0.0722 * linear(GetBValue(colour));
}

// A window's client area as it paints itself into a bitmap, row by row.
struct Capture {
    int width = 0;
    int height = 0;
    std::vector<COLORREF> pixels;
    COLORREF at(int x, int y) const { return pixels[static_cast<size_t>(y) * width + x]; }
};

Capture CaptureClient(HWND window) {
    Capture capture;
    RECT client = {};
    GetClientRect(window, &client);
    capture.width = client.right;
    capture.height = client.bottom;
    if (capture.width <= 0 || capture.height <= 0) {
        return capture;
    }
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), capture.width, -capture.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HDC dc = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap != nullptr) {
        HGDIOBJ previous = SelectObject(dc, bitmap);
        PrintWindow(window, dc, PW_CLIENTONLY);
        GdiFlush();
        const auto* quads = static_cast<const RGBQUAD*>(bits);
        for (int i = 0; i < capture.width * capture.height; ++i) {
            capture.pixels.push_back(RGB(quads[i].rgbRed, quads[i].rgbGreen, quads[i].rgbBlue));
        }
        SelectObject(dc, previous);
        DeleteObject(bitmap);
    }
    DeleteDC(dc);
    if (capture.pixels.empty()) {
        capture.width = capture.height = 0;
    }
    return capture;
}

COLORREF Commonest(const std::vector<COLORREF>& colours) {
    std::map<COLORREF, size_t> counts;
    for (COLORREF c : colours) ++counts[c];
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return most != counts.end() ? most->first : 0;
}

// The page's colours on a ring two pixels outside `box`.
std::vector<COLORREF> Surroundings(const Capture& page, RECT box) {
    std::vector<COLORREF> ring;
    InflateRect(&box, 2, 2);
    for (int x = box.left; x < box.right; ++x) {
        for (int y : {static_cast<int>(box.top), static_cast<int>(box.bottom) - 1}) {
            if (x >= 0 && y >= 0 && x < page.width && y < page.height) ring.push_back(page.at(x, y));
        }
    }
    for (int y = box.top; y < box.bottom; ++y) {
        for (int x : {static_cast<int>(box.left), static_cast<int>(box.right) - 1}) {
            if (x >= 0 && y >= 0 && x < page.width && y < page.height) ring.push_back(page.at(x, y));
        }
    }
    return ring;
}

bool IsPicture(HWND control) {
    wchar_t name[16] = {};
    GetClassNameW(control, name, 16);
    const DWORD kind = GetWindowLongW(control, GWL_STYLE) & SS_TYPEMASK;
    return lstrcmpiW(name, L"Static") == 0 && (kind == SS_OWNERDRAW || kind == SS_ICON || kind == SS_BITMAP) &&
           IsWindowVisible(control);
}

PictureContrast Measure(HWND control, const Capture& page, HWND pageWindow) {
    PictureContrast result;
    result.control = GetDlgCtrlID(control);
    RECT box = {};
    GetWindowRect(control, &box);
    MapWindowPoints(nullptr, pageWindow, reinterpret_cast<POINT*>(&box), 2);
    result.page = Commonest(Surroundings(page, box));
    const Capture picture = CaptureClient(control);
    result.commonest = Commonest(picture.pixels);
    std::vector<double> ratios;
    RECT drawn = {picture.width, picture.height, 0, 0};
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (picture.at(x, y) == result.page) continue;
            ratios.push_back(ContrastRatio(picture.at(x, y), result.page));
            drawn = {std::min<LONG>(drawn.left, x), std::min<LONG>(drawn.top, y), std::max<LONG>(drawn.right, x + 1),
                     std::max<LONG>(drawn.bottom, y + 1)};
        }
    }
    result.drawn = ratios.size();
    if (!ratios.empty()) {
        const auto quarter = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 4);
        std::nth_element(ratios.begin(), quarter, ratios.end(), std::greater<double>());
        result.ratio = *quarter;
        result.span = std::max(static_cast<double>(drawn.right - drawn.left) / picture.width,
                               static_cast<double>(drawn.bottom - drawn.top) / picture.height);
    }
    return result;
}

}  // namespace

double ContrastRatio(COLORREF a, COLORREF b) {
    const double la = Luminance(a);
    const double lb = Luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

std::vector<PictureContrast> MeasurePictureContrast(HWND page) {
    std::vector<PictureContrast> results;
    const Capture pageCapture = CaptureClient(page);
    for (HWND child = GetWindow(page, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsPicture(child)) {
            results.push_back(Measure(child, pageCapture, page));
        }
    }
    return results;
}

}  // namespace ozdkhost
