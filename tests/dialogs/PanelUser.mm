#include "PanelUser.h"

#include <QDir>
#include <QElapsedTimer>
#include <QList>
#include <QPoint>
#include <QProcess>

#import <Cocoa/Cocoa.h>

#include <memory>
#include <objc/runtime.h>
#include <unistd.h>

namespace {

constexpr NSTimeInterval tickSeconds = 0.02;
constexpr qint64 patienceMs = 10000;

QString text(NSString *string)
{
    return QString::fromUtf8([string UTF8String]);
}

/// Runs xdotool to its end.
bool xdotool(const QStringList &arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral("xdotool"), arguments);
    return process.waitForFinished(static_cast<int>(patienceMs)) && process.exitCode() == 0;
}

/// The panel that is up; nil if there is none.
NSWindow *panel()
{
    NSWindow *window = [NSApp modalWindow];
    return [window isVisible] ? window : nil;
}

void forEachView(NSView *view, const std::function<void(NSView *)> &visit)
{
    visit(view);
    for (NSUInteger i = 0; i < [[view subviews] count]; ++i)
        forEachView([[view subviews] objectAtIndex:i], visit);
}

/// The first view of a class for which a condition holds; nil if there is none.
template<typename Type>
Type *findView(Class wanted, const std::function<bool(Type *)> &holds)
{
    Type *found = nil;
    forEachView([panel() contentView], [&](NSView *view) {
        if (!found && [view isKindOfClass:wanted] && holds(static_cast<Type *>(view)))
            found = static_cast<Type *>(view);
    });
    return found;
}

NSMatrix *lastColumn()
{
    NSBrowser *browser = findView<NSBrowser>([NSBrowser class], [](NSBrowser *) { return true; });
    return browser ? [browser matrixInColumn:[browser lastColumn]] : nil;
}

QString cellText(NSMatrix *matrix, NSInteger row)
{
    return text([[matrix cellAtRow:row column:0] stringValue]);
}

/// The middle of a part of a view on the screen, as the mouse counts: from the top left.
QPoint onScreen(NSView *view, NSRect part)
{
    const NSRect inWindow = [view convertRect:part toView:nil];
    const NSPoint place =
        [[view window] convertBaseToScreen:NSMakePoint(NSMidX(inWindow), NSMidY(inWindow))];
    const CGFloat screenHeight = [[[view window] screen] frame].size.height;
    return {qRound(place.x), qRound(screenHeight - place.y)};
}

bool pressMouse(const QPoint &place)
{
    return xdotool({QStringLiteral("mousemove"), QString::number(place.x()),
                    QString::number(place.y()), QStringLiteral("mousedown"), QStringLiteral("1")});
}

/// Whether a view has taken the press of the mouse, and waits for its release.
bool isTrackingMouse()
{
    return [[[NSRunLoop currentRunLoop] currentMode] isEqualToString:NSEventTrackingRunLoopMode];
}

} // namespace

/// What is called back in time.
class Ticked
{
public:
    virtual void tick() = 0;

protected:
    ~Ticked() = default;
};

/// Ticks while a modal panel is up, also while the mouse is held down in it.
@interface PanelTick : NSObject {
    Ticked *m_ticked;
    NSTimer *m_timer;
}
- (id)initWith:(Ticked *)ticked;
- (void)stop;
- (void)tick:(NSTimer *)timer;
@end

@implementation PanelTick
- (id)initWith:(Ticked *)ticked
{
    if ((self = [super init])) {
        m_ticked = ticked;
        m_timer = [NSTimer timerWithTimeInterval:tickSeconds
                                          target:self
                                        selector:@selector(tick:)
                                        userInfo:nil
                                         repeats:YES];
        for (NSString *mode : {NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode})
            [[NSRunLoop currentRunLoop] addTimer:m_timer forMode:mode];
    }
    return self;
}
- (void)stop
{
    [m_timer invalidate]; // which releases this object, too
}
- (void)tick:(NSTimer *)timer
{
    (void)timer;
    m_ticked->tick();
}
@end

namespace {

QStringList presetTypes;

QStringList allowedTypes(NSSavePanel *panel)
{
    QStringList types;
    for (NSUInteger i = 0; i < [[panel allowedFileTypes] count]; ++i)
        types.append(text([[panel allowedFileTypes] objectAtIndex:i]));
    return types;
}

} // namespace

/// Notes which types an open panel has before it takes those that it is run with.
@interface NSOpenPanel (PresetTypes)
- (NSInteger)noteTypesAndRun:(NSArray *)types;
@end

@implementation NSOpenPanel (PresetTypes)
- (NSInteger)noteTypesAndRun:(NSArray *)types
{
    presetTypes = allowedTypes(self);
    return
        [self noteTypesAndRun:types]; // the panel's own method, which has changed names with this
}
@end

namespace {

/// Brings the application up, once: only then it passes the keys on to its panels.
void launch()
{
    if (NSApp)
        return;
    // It would open what the arguments name: they are the test's.
    char name[] = "tst_FileDialogsMac";
    char *arguments[] = {name, nullptr};
    [NSProcessInfo initializeWithArguments:arguments count:1 environment:environ];
    [[NSApplication sharedApplication] finishLaunching];
    [NSApp activateIgnoringOtherApps:YES];
    method_exchangeImplementations(
        class_getInstanceMethod([NSOpenPanel class], @selector(runModalForTypes:)),
        class_getInstanceMethod([NSOpenPanel class], @selector(noteTypesAndRun:)));
}

} // namespace

struct PanelUser::Data final : Ticked
{
    /// A step is done when it returns true.
    struct Step
    {
        QString name;
        std::function<bool()> tryOnce;
    };

    void tick() override;
    bool isReady();
    void giveUp(const QString &why);

    QList<Step> steps;
    int done = 0;
    QString fault;
    QElapsedTimer waited;
    PanelTick *timer = nil;
    NSAutoreleasePool *pool = nil;
};

/// Whether the panel is on the screen; it then has the keyboard, too.
bool PanelUser::Data::isReady()
{
    if (isTrackingMouse())
        return true;
    // It may have lost the keyboard when the panel before this one went away.
    if (![NSApp isActive])
        [NSApp activateIgnoringOtherApps:YES];
    const QString title = QStringLiteral("^%1$").arg(text([panel() title]));
    return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                    QStringLiteral("--name"), title, QStringLiteral("windowfocus")});
}

void PanelUser::Data::tick()
{
    if (!panel())
        return;
    if (!waited.isValid())
        waited.start();
    if (!isReady()) {
        if (waited.hasExpired(patienceMs))
            giveUp(QStringLiteral("The panel does not show up"));
        return;
    }
    if (done < steps.size() && steps[done].tryOnce()) {
        ++done;
        waited.restart();
    } else if (waited.hasExpired(patienceMs)) {
        giveUp(done < steps.size() ? QStringLiteral("Cannot ") + steps[done].name
                                   : QStringLiteral("The panel does not go away"));
    }
}

void PanelUser::Data::giveUp(const QString &why)
{
    if (fault.isEmpty())
        fault = why;
    if (isTrackingMouse())
        xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    [NSApp stopModal];
    // The end is seen when the next event comes.
    [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:0
                                         context:nil
                                         subtype:0
                                           data1:0
                                           data2:0]
             atStart:NO];
}

PanelUser::PanelUser() : m_data(new Data)
{
    m_data->pool = [[NSAutoreleasePool alloc] init];
    launch();
    m_data->timer = [[PanelTick alloc] initWith:m_data];
}

PanelUser::~PanelUser()
{
    [m_data->timer stop];
    [m_data->timer release];
    [m_data->pool release];
    delete m_data;
}

PanelUser &PanelUser::add(const QString &step, const std::function<bool()> &tryOnce)
{
    m_data->steps.append({step, tryOnce});
    return *this;
}

PanelUser &PanelUser::click(const QString &button)
{
    const auto press = [=] {
        NSButton *found = findView<NSButton>(
            [NSButton class], [&](NSButton *each) { return text([each title]) == button; });
        return found && [found isEnabled] && pressMouse(onScreen(found, [found bounds]));
    };
    add(QStringLiteral("click ") + button, press);
    return releaseMouse(press);
}

PanelUser &PanelUser::clickFile(const QString &name)
{
    const auto press = [=] {
        NSMatrix *files = lastColumn();
        for (NSInteger row = 0; row < [files numberOfRows]; ++row) {
            if (cellText(files, row) == name)
                return pressMouse(onScreen(files, [files cellFrameAtRow:row column:0]));
        }
        return false;
    };
    add(QStringLiteral("click the file ") + name, press);
    return releaseMouse(press);
}

// A release that comes before the press is taken would be lost. A press that nobody took, because
// the panel was still arranging itself, is made again.
PanelUser &PanelUser::releaseMouse(const std::function<bool()> &pressAgain)
{
    constexpr int patience = 50; // ticks
    const auto ticks = std::make_shared<int>(0);
    return add(QStringLiteral("release the mouse"), [=] {
        const bool isTaken = isTrackingMouse();
        const bool isLost = !isTaken && ++*ticks % patience == 0;
        if (isTaken || isLost)
            xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
        if (isLost)
            pressAgain();
        return isTaken;
    });
}

PanelUser &PanelUser::hold(const QString &key)
{
    return add(QStringLiteral("hold ") + key, [=] {
        return xdotool({QStringLiteral("keydown"), key});
    });
}

PanelUser &PanelUser::release(const QString &key)
{
    return add(QStringLiteral("release ") + key, [=] {
        return xdotool({QStringLiteral("keyup"), key});
    });
}

PanelUser &PanelUser::type(const QString &keys)
{
    return add(QStringLiteral("type ") + keys, [=] {
        return xdotool({QStringLiteral("type"), keys});
    });
}

PanelUser &PanelUser::press(const QString &key)
{
    return add(QStringLiteral("press ") + key, [=] {
        return xdotool({QStringLiteral("key"), key});
    });
}

PanelUser &PanelUser::look(const std::function<void()> &look)
{
    return add(QStringLiteral("look"), [=] {
        look();
        return true;
    });
}

QString PanelUser::title()
{
    return text([panel() title]);
}

QStringList PanelUser::texts()
{
    QStringList result;
    forEachView([panel() contentView], [&](NSView *view) {
        if ([view isKindOfClass:[NSTextField class]])
            result.append(text([static_cast<NSTextField *>(view) stringValue]));
    });
    return result;
}

QStringList PanelUser::buttons()
{
    QStringList result;
    forEachView([panel() contentView], [&](NSView *view) {
        if ([view isKindOfClass:[NSButton class]])
            result.append(text([static_cast<NSButton *>(view) title]));
    });
    return result;
}

QStringList PanelUser::files()
{
    QStringList result;
    NSMatrix *files = lastColumn();
    for (NSInteger row = 0; row < [files numberOfRows]; ++row)
        result.append(cellText(files, row));
    return result;
}

PanelUser::OpenPanelState PanelUser::openPanel()
{
    NSOpenPanel *open = static_cast<NSOpenPanel *>(panel());
    return {static_cast<bool>([open canChooseFiles]),
            static_cast<bool>([open canChooseDirectories]),
            static_cast<bool>([open allowsMultipleSelection]), presetTypes, allowedTypes(open)};
}

QStringList PanelUser::allowedFileTypes()
{
    return allowedTypes(static_cast<NSSavePanel *>(panel()));
}

QString PanelUser::folder()
{
    return text([static_cast<NSSavePanel *>(panel()) directory]);
}

void PanelUser::setFolder(const QString &path)
{
    QDir::setCurrent(path);
    NSString *folder = [NSString stringWithUTF8String:path.toUtf8().constData()];
    [[NSUserDefaults standardUserDefaults] setObject:folder forKey:@"NSDefaultOpenDirectory"];
}

bool PanelUser::isDone() const
{
    return m_data->done == m_data->steps.size();
}

QString PanelUser::fault() const
{
    return m_data->fault;
}
