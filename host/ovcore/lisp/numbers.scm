;; Numbers as the dialect has them: integers of 32 bits that wrap around on overflow,
;; integer division that truncates, and reals wherever one real takes part.

(define %int-min -2147483648)
(define %int-max 2147483647)

(define (int32 n)
  (let ((m (logand n #xFFFFFFFF)))
    (if (>= m #x80000000) (- m #x100000000) m)))

(define (int32? x) (and (exact-integer? x) (<= %int-min x %int-max)))

;; What an argument counts as: a 32-bit integer stays one; any other number (a fraction
;; that Guile made, an integer beyond 32 bits written in the source) is a real.
(define (numeric who x)
  (cond ((int32? x) x)
        ((real? x) (exact->inexact x))
        (else (bad-argument who x))))

(define (integer-arg who x) (if (int32? x) x (bad-argument who x)))

(define (all-exact? xs) (let loop ((xs xs)) (or (null? xs) (and (exact? (car xs)) (loop (cdr xs))))))

(define (finish xs value) (if (all-exact? xs) (int32 value) (exact->inexact value)))

(define (numbers who args) (map (lambda (x) (numeric who x)) args))

(define (lisp-+ . args) (let ((xs (numbers '+ args))) (finish xs (apply + xs))))
(define (lisp-* . args) (let ((xs (numbers '* args))) (finish xs (apply * xs))))
(define (lisp-- . args)
  (let ((xs (numbers '- args)))
    (if (null? xs) 0 (finish xs (apply - xs)))))

(define (divide-by-zero) (lisp-error "divide by zero"))

;; (/ 7 2) is 3: two integers divide as integers, truncating toward zero.
(define (lisp-/ . args)
  (let ((xs (numbers '/ args)))
    (if (null? xs)
        0
        (let loop ((value (car xs)) (rest (cdr xs)))
          (cond ((null? rest) value)
                ((zero? (car rest)) (divide-by-zero))
                ((and (exact? value) (exact? (car rest)))
                 (loop (int32 (truncate-quotient value (car rest))) (cdr rest)))
                (else (loop (exact->inexact (/ value (car rest))) (cdr rest))))))))

(define (lisp-1+ x) (let ((n (numeric '1+ x))) (finish (list n) (+ n 1))))
(define (lisp-1- x) (let ((n (numeric '1- x))) (finish (list n) (- n 1))))
(define (lisp-abs x) (let ((n (numeric 'abs x))) (finish (list n) (abs n))))

(define (rem . args)
  (let ((xs (numbers 'rem args)))
    (if (null? xs)
        0
        (let loop ((value (car xs)) (rest (cdr xs)))
          (cond ((null? rest) value)
                ((zero? (car rest)) (divide-by-zero))
                ((and (exact? value) (exact? (car rest)))
                 (loop (truncate-remainder value (car rest)) (cdr rest)))
                (else (let ((a value) (b (exact->inexact (car rest))))
                        (loop (- a (* b (truncate (/ a b)))) (cdr rest)))))))))

(define (lisp-gcd a b)
  (int32 (gcd (integer-arg 'gcd a) (integer-arg 'gcd b))))

(define (lisp-max first . more)
  (let ((xs (numbers 'max (cons first more)))) (finish xs (apply max xs))))
(define (lisp-min first . more)
  (let ((xs (numbers 'min (cons first more)))) (finish xs (apply min xs))))

(define (zerop x) (zero? (numeric 'zerop x)))
(define (minusp x) (negative? (numeric 'minusp x)))
(define (numberp x) (real? x))

(define (lisp-fix x)
  (let ((t (truncate (numeric 'fix x))))
    ;; Beyond 32 bits the truncated value stays a real.
    (if (<= %int-min t %int-max) (inexact->exact t) (exact->inexact t))))

;;; Bits

(define (lsh n bits)
  (let ((u (logand (integer-arg 'lsh n) #xFFFFFFFF))
        (k (integer-arg 'lsh bits)))
    ;; Bits shifted out are gone; a right shift brings in zeros.
    (if (>= (abs k) 32) 0 (int32 (ash u k)))))

(define (~ n) (int32 (lognot (integer-arg '~ n))))

(define (lisp-logand . args)
  (if (null? args) 0 (int32 (apply logand (map (lambda (x) (integer-arg 'logand x)) args)))))
(define (lisp-logior . args)
  (if (null? args) 0 (int32 (apply logior (map (lambda (x) (integer-arg 'logior x)) args)))))

;; (boole op a b ...): bit 1 of op keeps the bits set in both, 2 those only in a, 4 those
;; only in b, 8 those in neither; 1 is AND, 6 XOR, 7 OR, 8 NOR.
(define (boole op first . more)
  (let ((f (integer-arg 'boole op)))
    (unless (<= 0 f 15) (bad-argument 'boole op))
    (let loop ((a (logand (integer-arg 'boole first) #xFFFFFFFF))
               (rest more))
      (if (null? rest)
          (int32 a)
          (let* ((b (logand (integer-arg 'boole (car rest)) #xFFFFFFFF))
                 (na (logand (lognot a) #xFFFFFFFF))
                 (nb (logand (lognot b) #xFFFFFFFF)))
            (loop (logior (if (logtest f 1) (logand a b) 0)
                          (if (logtest f 2) (logand a nb) 0)
                          (if (logtest f 4) (logand na b) 0)
                          (if (logtest f 8) (logand na nb) 0))
                  (cdr rest)))))))

;;; Reals

(define (real-result who x) (if (and (real? x) (not (nan? x))) x (lisp-error "~a: bad argument" who)))

(define (lisp-sqrt x)
  (let ((n (numeric 'sqrt x)))
    (if (negative? n) (lisp-error "sqrt: function undefined for argument: ~a" (%lisp-notation x #t))
        (exact->inexact (sqrt n)))))

(define (lisp-expt base power)
  (let ((b (numeric 'expt base)) (p (numeric 'expt power)))
    (cond ((and (exact? b) (exact? p))
           ;; Worked modulo 2^32, the integers' own width, so that a huge power
           ;; wraps at once instead of building a number of billions of digits.
           (cond ((>= p 0) (int32 (modulo-expt b p #x100000000)))
                 ((zero? b) (divide-by-zero))
                 ((= b 1) 1)
                 ((= b -1) (if (even? p) 1 -1))
                 (else 0)))
          ((and (zero? b) (negative? p)) (divide-by-zero))
          ((and (negative? b) (not (integer? p)))
           (lisp-error "expt: function undefined for argument: ~a" (%lisp-notation base #t)))
          (else (real-result 'expt (exact->inexact (expt b p)))))))

(define (lisp-exp x) (exact->inexact (exp (numeric 'exp x))))
(define (lisp-log x)
  (let ((n (numeric 'log x)))
    (if (positive? n) (exact->inexact (log n))
        (lisp-error "log: function undefined for argument: ~a" (%lisp-notation x #t)))))
(define (lisp-sin x) (exact->inexact (sin (numeric 'sin x))))
(define (lisp-cos x) (exact->inexact (cos (numeric 'cos x))))
(define* (lisp-atan y #:optional x)
  (exact->inexact (if x (atan (numeric 'atan y) (numeric 'atan x)) (atan (numeric 'atan y)))))

(define pi (* 4 (atan 1.0)))

;;; Comparison of numbers, or of texts

(define (ordered who ok? a more)
  (let loop ((a a) (more more))
    (cond ((null? more) #t)
          ((and (real? a) (real? (car more)))
           (and (ok? (if (< a (car more)) -1 (if (= a (car more)) 0 1)))
                (loop (car more) (cdr more))))
          ((and (string? a) (string? (car more)))
           (and (ok? (if (string<? a (car more)) -1 (if (string=? a (car more)) 0 1)))
                (loop (car more) (cdr more))))
          (else (bad-argument who (if (or (real? a) (string? a)) (car more) a))))))

(define (lisp-< a . more) (ordered '< negative? a more))
(define (lisp-> a . more) (ordered '> positive? a more))
(define (lisp-<= a . more) (ordered '<= (lambda (c) (<= c 0)) a more))
(define (lisp->= a . more) (ordered '>= (lambda (c) (>= c 0)) a more))

(module-replace! (current-module)
  '((lisp-+ . +) (lisp-- . -) (lisp-* . *) (lisp-/ . /) (lisp-1+ . 1+) (lisp-1- . 1-)
    (lisp-abs . abs) rem (lisp-gcd . gcd) (lisp-max . max) (lisp-min . min)
    zerop minusp numberp (lisp-fix . fix) lsh ~ (lisp-logand . logand) (lisp-logior . logior)
    boole (lisp-sqrt . sqrt) (lisp-expt . expt) (lisp-exp . exp) (lisp-log . log)
    (lisp-sin . sin) (lisp-cos . cos) (lisp-atan . atan) pi
    (lisp-< . <) (lisp-> . >) (lisp-<= . <=) (lisp->= . >=)))
