#include "base/module_pictures.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "base/module_state.h"

namespace {

// A pixel as coverage and colour already weighed by it, each from 0 to 1.
struct Pixel {
    float red, green, blue, cover;
};

double Luminance(COLORREF colour) {
    const auto linear = [](BYTE channel) {
        const double c = channel / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(GetRValue(colour)) + 0.7152 * linear(GetGValue(colour)) +
           0.0722 * linear(GetBValue(colour));
}

bool HighContrastOn() {
    HIGHCONTRASTW state = {};
    state.cbSize = sizeof(state);
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(state), &state, 0) &&
           (state.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

// The colour of the strokes of a high-contrast picture on `background`.
COLORREF StrokeColour(COLORREF background) {
    const COLORREF text = GetSysColor(COLOR_BTNTEXT);
    if (ContrastRatio(text, background) >= 3.0) {
        return text;
    }
    const COLORREF black = RGB(0, 0, 0);
    const COLORREF white = RGB(255, 255, 255);
    return ContrastRatio(black, background) >= ContrastRatio(white, background) ? black : white;
}

// The bitmap's pixels, top row first. The transparent colour is not covered. With
// `strokes`, dark pixels become strokes of that colour and light ones are left out.
std::vector<Pixel> ReadPixels(HDC dc, HBITMAP bitmap, int width, int height, COLORREF transparent,
                              const COLORREF* strokes) {
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    std::vector<RGBQUAD> quads(static_cast<size_t>(width) * height);
    std::vector<Pixel> pixels;
    if (GetDIBits(dc, bitmap, 0, static_cast<UINT>(height), quads.data(), &info, DIB_RGB_COLORS) != height) {
        return pixels;
    }
    pixels.reserve(quads.size());
    for (const RGBQUAD& quad : quads) {
        const COLORREF colour = RGB(quad.rgbRed, quad.rgbGreen, quad.rgbBlue);
        if (colour == transparent || (strokes != nullptr && Luminance(colour) >= 0.18)) {
            pixels.push_back({0, 0, 0, 0});
            continue;
        }
        const COLORREF shown = strokes != nullptr ? *strokes : colour;
        pixels.push_back({GetRValue(shown) / 255.0f, GetGValue(shown) / 255.0f, GetBValue(shown) / 255.0f, 1.0f});
    }
    return pixels;
}

// For each pixel along one side of the drawn picture, the source pixels it is made of
// and their weights: between the two nearest when it grows, those it covers when it
// shrinks.
using Taps = std::vector<std::vector<std::pair<int, float>>>;

Taps AxisTaps(int from, int to) {
    Taps taps(static_cast<size_t>(to));
    const double step = static_cast<double>(from) / to;
    for (int d = 0; d < to; ++d) {
        if (step <= 1.0) {
            const double at = std::min(std::max((d + 0.5) * step - 0.5, 0.0), from - 1.0);
            const int nearest = static_cast<int>(at);
            const float t = static_cast<float>(at - nearest);
            taps[d] = {{nearest, 1.0f - t}, {std::min(nearest + 1, from - 1), t}};
        } else {
            const double begin = d * step;
            const double end = std::min((d + 1) * step, static_cast<double>(from));
            for (int s = static_cast<int>(begin); s < end; ++s) {
                const double cover = std::min(end, s + 1.0) - std::max(begin, static_cast<double>(s));
                taps[d].push_back({s, static_cast<float>(cover / step)});
            }
        }
    }
    return taps;
}

std::vector<Pixel> Resample(const std::vector<Pixel>& source, int width, int height, int toWidth, int toHeight) {
    if (toWidth == width && toHeight == height) {
        return source;
    }
    const Taps across = AxisTaps(width, toWidth);
    const Taps down = AxisTaps(height, toHeight);
    std::vector<Pixel> drawn(static_cast<size_t>(toWidth) * toHeight, Pixel{0, 0, 0, 0});
    for (int y = 0; y < toHeight; ++y) {
        for (int x = 0; x < toWidth; ++x) {
            Pixel& out = drawn[static_cast<size_t>(y) * toWidth + x];
            for (const auto& [row, rowWeight] : down[y]) {
                for (const auto& [column, columnWeight] : across[x]) {
                    const Pixel& in = source[static_cast<size_t>(row) * width + column];
                    const float weight = rowWeight * columnWeight;
                    out.red += in.red * weight;
                    out.green += in.green * weight;
                    out.blue += in.blue * weight;
                    out.cover += in.cover * weight;
                }
            }
        }
    }
    return drawn;
}

// The picture's pixels laid over `background`; uncovered pixels keep the transparent colour.
void Compose(const std::vector<Pixel>& pixels, COLORREF background, COLORREF transparent, RGBQUAD* out) {
    const auto channel = [](float premultiplied, BYTE behind, float cover) {
        const float value = premultiplied * 255.0f + behind * (1.0f - cover);
        return static_cast<BYTE>(std::min(255.0f, std::max(0.0f, value + 0.5f)));
    };
    for (size_t i = 0; i < pixels.size(); ++i) {
        const Pixel& p = pixels[i];
        COLORREF colour = transparent;
        if (p.cover >= 0.5f / 255.0f) {
            colour = RGB(channel(p.red, GetRValue(background), p.cover),
                         channel(p.green, GetGValue(background), p.cover),
                         channel(p.blue, GetBValue(background), p.cover));
            if (colour == transparent) {
                colour ^= RGB(0, 0, 1);  // one step of blue apart, so that it is drawn
            }
        }
        out[i] = {GetBValue(colour), GetGValue(colour), GetRValue(colour), 0};
    }
}

}  // namespace

double ContrastRatio(COLORREF a, COLORREF b) {
    const double la = Luminance(a);
    const double lb = Luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

void DrawModuleBitmap(const DRAWITEMSTRUCT* item, UINT bitmapId, COLORREF transparent) {
    HDC dc = item->hDC;
    const RECT& area = item->rcItem;
    // The page's own background for its pictures: the brush it gives its static controls.
    auto brush = reinterpret_cast<HBRUSH>(SendMessageW(GetParent(item->hwndItem), WM_CTLCOLORSTATIC,
                                                       reinterpret_cast<WPARAM>(dc),
                                                       reinterpret_cast<LPARAM>(item->hwndItem)));
    FillRect(dc, &area, brush != nullptr ? brush : GetSysColorBrush(COLOR_BTNFACE));
    COLORREF background = GetPixel(dc, area.left, area.top);
    if (background == CLR_INVALID) {
        background = GetSysColor(COLOR_BTNFACE);
    }

    auto bitmap = static_cast<HBITMAP>(
        LoadImageW(ghInstance, MAKEINTRESOURCEW(bitmapId), IMAGE_BITMAP, 0, 0, LR_DEFAULTCOLOR));
    BITMAP size = {};
    if (bitmap == nullptr || GetObjectW(bitmap, sizeof(size), &size) == 0 || size.bmWidth <= 0 ||
        size.bmHeight <= 0) {
        if (bitmap != nullptr) DeleteObject(bitmap);
        return;
    }
    const COLORREF strokes = StrokeColour(background);
    const std::vector<Pixel> pixels = ReadPixels(dc, bitmap, size.bmWidth, size.bmHeight, transparent,
                                                 HighContrastOn() ? &strokes : nullptr);
    DeleteObject(bitmap);
    if (pixels.empty()) {
        return;
    }

    const int dpi = GetDeviceCaps(dc, LOGPIXELSY);
    const double fit = std::min(static_cast<double>(area.right - area.left) / size.bmWidth,
                                static_cast<double>(area.bottom - area.top) / size.bmHeight);
    const double scale = std::max(1.0, std::min(dpi > 0 ? dpi / 96.0 : 1.0, fit));
    const int width = std::max(1, static_cast<int>(std::lround(size.bmWidth * scale)));
    const int height = std::max(1, static_cast<int>(std::lround(size.bmHeight * scale)));

    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HDC source = CreateCompatibleDC(dc);
    HBITMAP drawn = source != nullptr ? CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0) : nullptr;
    if (drawn != nullptr) {
        Compose(Resample(pixels, size.bmWidth, size.bmHeight, width, height), background, transparent,
                static_cast<RGBQUAD*>(bits));
        HGDIOBJ previous = SelectObject(source, drawn);
        TransparentBlt(dc, area.left, area.top, width, height, source, 0, 0, width, height, transparent);
        SelectObject(source, previous);
        DeleteObject(drawn);
    }
    if (source != nullptr) DeleteDC(source);
}
