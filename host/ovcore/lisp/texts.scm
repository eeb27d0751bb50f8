;; Texts: characters and codes, wildcard matching, and numbers, distances and angles
;; written and read in the dialect's unit modes.
;;
;; The primitives this builds on are defined in C++, in src/lispLibTexts.cpp.

(use-modules (ice-9 regex))

(define (ascii text)
  (check-string 'ascii text)
  (if (string-null? text) 0 (char->integer (string-ref text 0))))

(define (chr code)
  (let ((n (integer-arg 'chr code)))
    (cond ((= n 0) "")
          ((and (< 0 n #x110000) (not (<= #xD800 n #xDFFF))) (string (integer->char n)))
          (else (bad-argument 'chr code)))))

(define (wcmatch text pattern)
  (%wcmatch (check-string 'wcmatch text) (check-string 'wcmatch pattern)))

;; (snvalid name [flag]): a name a table may hold; with flag 1 a vertical bar may stand
;; inside it, as in the names of attached drawings' layers.
(define* (snvalid name #:optional (flag 0))
  (check-string 'snvalid name)
  (let ((bars (and (eqv? (integer-arg 'snvalid (if (lisp-nil? flag) 0 flag)) 1)
                   (> (string-length name) 2))))
    (%valid-name
     (if bars
         (string-append (substring name 0 1)
                        (string-map (lambda (c) (if (char=? c #\|) #\A c))
                                    (substring name 1 (- (string-length name) 1)))
                        (substring name (- (string-length name) 1)))
         name))))

;;; Numbers as text

(define (check-mode who mode low high)
  (let ((m (integer-arg who mode)))
    (if (<= low m high) m (bad-argument who mode))))

(define (check-precision who precision)
  (let ((p (integer-arg who precision)))
    (if (<= 0 p 8) p (bad-argument who precision))))

(define (check-finite who x)
  (let ((n (numeric who x)))
    (if (and (inexact? n) (or (nan? n) (inf? n))) (bad-argument who x) n)))

;; |x| with `digits` decimals, rounded half away from zero as a drafter reads it.
(define (fixed-text x digits)
  (let* ((scale (expt 10 digits))
         (units (inexact->exact (floor (+ (* (abs (inexact->exact x)) scale) 1/2))))
         (whole (number->string (quotient units scale))))
    (if (= digits 0)
        whole
        (let ((fraction (number->string (remainder units scale))))
          (string-append whole "."
                         (make-string (- digits (string-length fraction)) #\0) fraction)))))

(define (signed x text) (if (and (negative? x) (not (every-zero? text))) (string-append "-" text) text))
(define (every-zero? text) (not (string-index text (char-set-delete char-set:digit #\0))))

(define (scientific-text x digits)
  (if (zero? x)
      (string-append (fixed-text 0 digits) "E+00")
      (let* ((a (abs x))
             (e (inexact->exact (floor (/ (log a) (log 10)))))
             (e (if (>= (/ a (expt 10.0 e)) 10) (+ e 1) e))
             (m (/ a (expt 10.0 e)))
             (m-text (fixed-text m digits))
             ;; Rounding may carry the mantissa to 10.
             (carry (>= (string->number m-text) 10))
             (m-text (if carry (fixed-text (/ m 10) digits) m-text))
             (e (if carry (+ e 1) e)))
        (string-append m-text "E" (if (negative? e) "-" "+")
                       (if (< (abs e) 10) "0" "") (number->string (abs e))))))

;; n/d in lowest terms after `whole`: "3 1/2", "3", "1/2".
(define (fraction-text whole n d)
  (let* ((g (if (zero? n) 1 (gcd n d)))
         (part (if (zero? n) "" (string-append (number->string (/ n g)) "/" (number->string (/ d g))))))
    (cond ((string-null? part) (number->string whole))
          ((zero? whole) part)
          (else (string-append (number->string whole) " " part)))))

(define (feet-inches-text feet inches-text)
  (cond ((zero? feet) (string-append inches-text "\""))
        ((every-zero? inches-text) (string-append (number->string feet) "'"))
        (else (string-append (number->string feet) "'-" inches-text "\""))))

(define (length-text x mode digits)
  (let ((a (abs x)))
    (case mode
      ((1) (scientific-text a digits))
      ((2) (fixed-text a digits))
      ((3) (let* ((scale (expt 10 digits))
                  (units (inexact->exact (floor (+ (* (inexact->exact a) scale) 1/2))))
                  (feet (quotient units (* 12 scale)))
                  (inches (/ (remainder units (* 12 scale)) scale)))
             (feet-inches-text feet (fixed-text inches digits))))
      ((4) (let* ((d (expt 2 digits))
                  (units (inexact->exact (floor (+ (* (inexact->exact a) d) 1/2))))
                  (feet (quotient units (* 12 d)))
                  (rest (remainder units (* 12 d))))
             (feet-inches-text feet (fraction-text (quotient rest d) (remainder rest d) d))))
      ((5) (let* ((d (expt 2 digits))
                  (units (inexact->exact (floor (+ (* (inexact->exact a) d) 1/2)))))
             (fraction-text (quotient units d) (remainder units d) d))))))

;; (rtos number [mode [precision]]): mode 1 scientific, 2 decimal, 3 engineering, 4
;; architectural, 5 fractional; precision 0 to 8 (decimals, or the power of two of the
;; smallest fraction).
(define* (rtos number #:optional (mode 2) (precision 4))
  (let ((x (check-finite 'rtos number))
        (m (check-mode 'rtos (if (lisp-nil? mode) 2 mode) 1 5))
        (p (check-precision 'rtos (if (lisp-nil? precision) 4 precision))))
    (signed x (length-text x m p))))

(define %number-rx (make-regexp "^[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]+)?$"))
(define %fraction-rx (make-regexp "^(([0-9]+)[ -]+)?([0-9]+)/([0-9]+)$"))
(define %feet-rx (make-regexp "^([0-9]+\\.?[0-9]*)'(-?(.*)\")?$"))

(define (plain-number text)
  (and (regexp-exec %number-rx text) (exact->inexact (string->number (string-trim text #\+)))))

(define (fraction-number text)
  (cond ((regexp-exec %fraction-rx text)
         => (lambda (m)
              (let ((whole (if (match:substring m 2) (string->number (match:substring m 2)) 0))
                    (n (string->number (match:substring m 3)))
                    (d (string->number (match:substring m 4))))
                (and (positive? d) (exact->inexact (+ whole (/ n d)))))))
        (else (plain-number text))))

(define (inches-number text)
  (let ((text (string-trim-both text)))
    (if (string-suffix? "\"" text)
        (fraction-number (string-trim-both (string-drop-right text 1)))
        (fraction-number text))))

(define (feet-inches-number text)
  (cond ((regexp-exec %feet-rx text)
         => (lambda (m)
              (let ((feet (string->number (match:substring m 1)))
                    (inches (if (match:substring m 3)
                                (fraction-number (string-trim-both (match:substring m 3)))
                                0)))
                (and inches (exact->inexact (+ (* 12 feet) inches))))))
        (else (inches-number text))))

;; (distof text [mode]): the real a text stands for in that mode, nil when it stands for
;; none. The feet-and-inches modes also take plain inches.
(define* (distof text #:optional (mode 2))
  (check-string 'distof text)
  (let* ((m (check-mode 'distof (if (lisp-nil? mode) 2 mode) 1 5))
         (t (string-trim-both text))
         (negative (string-prefix? "-" t))
         (t (if negative (string-drop t 1) t))
         (value (case m
                  ((1 2) (plain-number t))
                  ((3 4) (feet-inches-number t))
                  ((5) (fraction-number t)))))
    (cond ((not value) '())
          (negative (- value))
          (else value))))

;;; Angles as text

(define %two-pi (* 8 (atan 1.0)))

(define (normal-angle a)
  (let ((r (- a (* %two-pi (floor (/ a %two-pi))))))
    (if (>= r %two-pi) 0.0 r)))

(define (rad->deg a) (/ (* a 180.0) pi))
(define (deg->rad d) (/ (* d pi) 180.0))

;; Degrees, minutes and seconds, the precision saying how far: 0 degrees, 1-2 minutes,
;; 3-4 seconds, 5-8 decimals of a second.
(define (dms-text degrees digits)
  (let* ((decimals (max 0 (- digits 4)))
         (unit (cond ((= digits 0) 1) ((<= digits 2) 60) (else (* 3600 (expt 10 decimals)))))
         (units (inexact->exact (floor (+ (* (inexact->exact degrees) unit) 1/2))))
         (d (modulo (quotient units unit) 360))
         (rest (remainder units unit)))
    (cond ((= digits 0) (string-append (number->string d) "d"))
          ((<= digits 2)
           (string-append (number->string d) "d" (number->string rest) "'"))
          (else
           (let* ((per-minute (* 60 (expt 10 decimals)))
                  (minutes (quotient rest per-minute))
                  (seconds (/ (remainder rest per-minute) (expt 10 decimals))))
             (string-append (number->string d) "d" (number->string minutes) "'"
                            (fixed-text seconds decimals) "\""))))))

(define (surveyor-text a digits)
  (let ((d (rad->deg a)))
    (define (bearing from-north) (dms-text from-north digits))
    (cond ((< (abs (- d 90)) 1e-9) "N")
          ((< (abs (- d 270)) 1e-9) "S")
          ((< d 1e-9) "E")
          ((< (abs (- d 180)) 1e-9) "W")
          ((< d 90) (string-append "N " (bearing (- 90 d)) " E"))
          ((< d 180) (string-append "N " (bearing (- d 90)) " W"))
          ((< d 270) (string-append "S " (bearing (- 270 d)) " W"))
          (else (string-append "S " (bearing (- d 270)) " E")))))

;; (angtos angle [mode [precision]]): mode 0 degrees, 1 degrees/minutes/seconds, 2 grads,
;; 3 radians, 4 surveyor's units; the angle is taken from 0 to 2 pi.
(define* (angtos angle #:optional (mode 0) (precision 0))
  (let* ((a (normal-angle (exact->inexact (check-finite 'angtos angle))))
         (m (check-mode 'angtos (if (lisp-nil? mode) 0 mode) 0 4))
         (p (check-precision 'angtos (if (lisp-nil? precision) 0 precision)))
         ;; A full turn after rounding reads as no turn.
         (turn (lambda (value full)
                 (let ((text (fixed-text value p)))
                   (if (>= (string->number text) full) (fixed-text 0 p) text)))))
    (case m
      ((0) (turn (rad->deg a) 360))
      ((1) (dms-text (rad->deg a) p))
      ((2) (string-append (turn (/ (* a 200.0) pi) 400) "g"))
      ((3) (string-append (turn a %two-pi) "r"))
      ((4) (surveyor-text a p)))))

(define %dms-rx
  (make-regexp "^([0-9]*\\.?[0-9]+)d(([0-9]*\\.?[0-9]+)')?(([0-9]*\\.?[0-9]+)\")?$"))
(define %surveyor-rx (make-regexp "^([NnSs]) *(.*[^ ]) *([EeWw])$"))

(define (dms-number text)
  (cond ((regexp-exec %dms-rx text)
         => (lambda (m)
              (let ((part (lambda (i) (if (match:substring m i) (string->number (match:substring m i)) 0))))
                (exact->inexact (+ (part 1) (/ (part 3) 60) (/ (part 5) 3600))))))
        (else (plain-number text))))

(define (angle-number text mode)
  (let* ((t (string-trim-both text))
         (negative (string-prefix? "-" t))
         (t (if negative (string-drop t 1) t))
         (suffixed (lambda (s) (and (string-suffix? s t) (plain-number (string-drop-right t 1)))))
         (radians
          (cond ((= mode 4)
                 (let ((m (regexp-exec %surveyor-rx t)))
                   (cond ((member t '("N" "n")) (deg->rad 90))
                         ((member t '("S" "s")) (deg->rad 270))
                         ((member t '("E" "e")) 0.0)
                         ((member t '("W" "w")) (deg->rad 180))
                         ((not m) #f)
                         (else
                          (let ((b (dms-number (match:substring m 2)))
                                (ns (char-upcase (string-ref (match:substring m 1) 0)))
                                (ew (char-upcase (string-ref (match:substring m 3) 0))))
                            (and b (<= b 90)
                                 (deg->rad (case ns
                                             ((#\N) (if (char=? ew #\E) (- 90 b) (+ 90 b)))
                                             (else (if (char=? ew #\W) (- 270 b) (+ 270 b)))))))))))
                ((suffixed "g") => (lambda (g) (/ (* g pi) 200.0)))
                ((suffixed "r") => identity)
                ((string-index t #\d) (let ((d (dms-number t))) (and d (deg->rad d))))
                (else (let ((n (plain-number t)))
                        (and n (case mode
                                 ((0 1) (deg->rad n))
                                 ((2) (/ (* n pi) 200.0))
                                 ((3) n))))))))
    (and radians (normal-angle (if negative (- radians) radians)))))

;; (angtof text [mode]): the angle in radians, from 0 to 2 pi; nil when the text is none.
(define* (angtof text #:optional (mode 0))
  (check-string 'angtof text)
  (or (angle-number text (check-mode 'angtof (if (lisp-nil? mode) 0 mode) 0 4)) '()))

;; (read text): the first expression of the text; nil for a text without one.
(define (lisp-read text)
  (if (port? text)
      (read text)
      (let ((form (read (open-input-string (check-string 'read text)))))
        (if (eof-object? form) '() form))))

(module-replace! (current-module)
  '(ascii chr wcmatch snvalid rtos distof angtos angtof (lisp-read . read)))
