#pragma once

#include <QObject>
#include <QString>
#include <QVector>

namespace corvalent {

// The Smart Data Collector without its window: the grabbed lines, the line shown now (cleaned of leading labels
// and punctuation) and the raw lines still to come, handed out one by one as the user grabs them into fields.
// frmSmartParser binds its two boxes and two buttons to it.
class SmartDataCollector : public QObject {
    Q_OBJECT
public:
    struct Line {
        QString text; // as split, not trimmed
        bool blank = false; // nothing left after CleanLeading
    };

    // The words a line loses when it begins with one of them, tried in this order.
    static inline const QString kLabelWords =
        QStringLiteral("Address,FirstName,LastName,First Name,Last Name,Surname,Location,Phone,Fax");

    explicit SmartDataCollector(QObject* parent = nullptr);

    // Form_Load's second half: splits the grabbed text and shows the first line that is not blank.
    void Load(const QString& grabbed);

    // txtCurrent and txtGrabbed. The user may edit both; what they hold is what the next step works on. The
    // setters are for those edits: they come from the boxes themselves, so they do not emit changed(), and an
    // edited txtGrabbed only changes what the finished test sees (the next line still comes from the list).
    const QString& current() const { return m_current; }
    void setCurrent(const QString& text);
    const QString& grabbed() const { return m_grabbed; }
    void setGrabbed(const QString& text);

    // Whether cmdDown (back) and cmdUp (next) are enabled.
    bool canGoBack() const { return m_canGoBack; }
    bool canGoNext() const { return m_canGoNext; }
    bool isFinished() const { return m_finished; }

    int currentIndex() const { return m_currentIndex; }
    int firstIndex() const { return m_firstIndex; }
    int lastIndex() const { return m_lastIndex; }
    const QVector<Line>& lines() const { return m_lines; }

    void cmdUp_Click();   // next line
    void cmdDown_Click(); // previous line
    // After the main window wrote text from the current line into a field. With a selection, the rest of the line
    // after it (selStart and selLength as the box reports them, 0-based) stays current when anything is left.
    void RemoveText(bool bUserSelectedText, int selStart = 0, int selLength = 0);

    static QVector<Line> SplitLines(const QString& text);
    static QString CleanLeading(const QString& text);
    static QString RemoveLabels(const QString& text);

signals:
    // A step changed the boxes or the buttons' state.
    void changed();
    // Nothing is left: the window closes itself.
    void finished();

private:
    void ShowLine(int& n);
    void CheckFinished();

    QVector<Line> m_lines;
    int m_currentIndex = 0;
    int m_firstIndex = -1;
    int m_lastIndex = 0;
    bool m_finished = false;
    bool m_canGoBack = false;
    bool m_canGoNext = false;
    QString m_current;
    QString m_grabbed;
};

} // namespace corvalent
